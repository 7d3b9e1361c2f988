// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/file_content.h"

#include <cerrno>
#include <cstddef>
#include <limits>
#include <new>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "app/file_error.h"

namespace tristop {
namespace {

constexpr size_t kLargestFile = std::numeric_limits<int32_t>::max();

/// An open file that closes itself.
class Descriptor {
public:
    explicit Descriptor(int descriptor) : descriptor(descriptor) {}
    ~Descriptor() {
        if (descriptor >= 0)
            close(descriptor);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    int get() const { return descriptor; }

private:
    int descriptor;
};

std::string inWords(int error) {
    return std::generic_category().message(error);
}

std::string openingFailed(int error) {
    if (error == ENOENT || error == ENOTDIR)
        return "does not exist";
    if (error == ENXIO) // a socket
        return "is not an ordinary file";
    return "cannot be opened: " + inWords(error);
}

} // namespace

std::optional<std::string> readFileContent(const std::string &path, std::vector<uint8_t> &content) {
    // Without O_NONBLOCK a pipe would be waited for until somebody writes to it.
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file.get() < 0)
        return openingFailed(errno);
    struct stat status {};
    if (fstat(file.get(), &status) != 0)
        return "cannot be read: " + inWords(errno);
    if (S_ISDIR(status.st_mode))
        return "is a folder";
    if (!S_ISREG(status.st_mode))
        return "is not an ordinary file";
    if (static_cast<uintmax_t>(status.st_size) > kLargestFile)
        return "is too large: more than 2 gigabytes";
    try {
        std::vector<uint8_t> bytes(static_cast<size_t>(status.st_size) + 1); // one more, to see the end
        size_t length = 0;
        while (true) {
            const ssize_t count = read(file.get(), bytes.data() + length, bytes.size() - length);
            if (count < 0 && errno == EINTR)
                continue;
            if (count < 0)
                return "cannot be read: " + inWords(errno);
            if (count == 0)
                break;
            length += static_cast<size_t>(count);
            if (length > kLargestFile)
                return "is too large: more than 2 gigabytes";
            if (length == bytes.size()) // it grew meanwhile
                bytes.resize(2 * length);
        }
        if (length == 0)
            return "is empty";
        bytes.resize(length);
        content = std::move(bytes);
    } catch (const std::bad_alloc &) {
        return kOutOfMemory;
    }
    return std::nullopt;
}

} // namespace tristop
