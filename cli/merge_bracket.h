// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "app/photographs.h"
#include "cli/merge_report.h"
#include "cli/options.h"

namespace tristop {

/// Looks on while photographs are merged. Either may be empty; neither may throw, and neither is always
/// called on the thread that merges.
struct MergeWatch {
    std::function<void(int64_t percentage)> progress;
    std::function<bool()> cancelRequested; ///< true ends the merge as soon as it can
};

/**
 * Merges one bracket as `options` says: reads the photographs, merges, applies the colour effect, writes the
 * picture and the report folder. Tells in the result how it went, whatever happened; prints nothing. A
 * picture that has been begun to be written is finished when the merge is cancelled. Safe to call from
 * several threads for different pictures. `decodingMemory` is what openPhotographs may take.
 */
MergeReport mergeBracket(const Options &options, const MergeWatch &watch,
                         size_t decodingMemory = kDecodingMemory);

/// An error with the file to blame, if there is one.
std::string inOneLine(const FileError &error);

} // namespace tristop
