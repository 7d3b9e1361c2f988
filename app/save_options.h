// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace tristop {

/// A file type that pictures are saved as.
struct SaveType {
    const char *uti;
    const char *localized;
    std::span<const char *const> suffixes; ///< lower case, without the dot; the first is the usual one
};

/// What the save panel's options view is set to.
struct SaveOptions {
    static constexpr int64_t kNoCompression = 1;
    static constexpr int64_t kLzw = 5;
    static constexpr int64_t kPackBits = 32773;

    std::string saveUTI = "public.png";
    float jpegQuality = 0.9F; ///< 0 to 1
    int64_t tiffCompression = kNoCompression;
    bool hasAlpha = false;

    /// The three types in the order of the menu.
    static std::span<const SaveType> saveTypes();
    /// The chosen type; the first for an unknown one.
    const SaveType &saveType() const;
    /// The page of options to show: 2 for TIFF, 1 for JPEG, 0 otherwise.
    int saveTab() const;
    /// The TIFF compression, none for a value that is unknown.
    int64_t saveCompression() const;
};

/// A file name with a suffix of the type: kept when it has one, put in the place of another type's, else
/// added. A folder before the name stays; an empty name stays empty.
std::string nameForType(std::string_view name, const SaveType &type);

} // namespace tristop
