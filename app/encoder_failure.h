// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <string>

#include "app/file_writer.h"

namespace tristop {

constexpr const char *kNoMemoryReason = "there is not enough memory";

/// Where an encoder's error ends up: libpng and libjpeg leave through longjmp.
struct EncoderFailure {
    std::jmp_buf escape;
    std::FILE *file = nullptr;
    std::string reason;

    /// Keeps the system's error when the file could not be written, else the library's message.
    void note(const char *message) {
        const int error = errno;
        reason = std::ferror(file) != 0 ? errnoMessage(error) : message;
    }
};

} // namespace tristop
