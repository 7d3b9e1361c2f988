// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/save_options.h"

#include <algorithm>

namespace tristop {
namespace {

constexpr std::array kPngSuffixes = {"png"};
constexpr std::array kJpegSuffixes = {"jpg", "jpeg"};
constexpr std::array kTiffSuffixes = {"tif", "tiff"};
constexpr std::array<SaveType, 3> kSaveTypes = {{{"public.png", "PNG", kPngSuffixes},
                                                 {"public.jpeg", "JPEG", kJpegSuffixes},
                                                 {"public.tiff", "TIFF", kTiffSuffixes}}};

bool hasSuffix(const SaveType &type, std::string_view suffix) {
    std::string lower(suffix);
    std::ranges::transform(lower, lower.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    return std::ranges::find(type.suffixes, lower) != type.suffixes.end();
}

} // namespace

std::span<const SaveType> SaveOptions::saveTypes() {
    return kSaveTypes;
}

const SaveType &SaveOptions::saveType() const {
    const auto type = std::ranges::find(kSaveTypes, saveUTI, &SaveType::uti);
    return type != kSaveTypes.end() ? *type : kSaveTypes.front();
}

int SaveOptions::saveTab() const {
    if (saveUTI == "public.tiff")
        return 2;
    return saveUTI == "public.jpeg" ? 1 : 0;
}

int64_t SaveOptions::saveCompression() const {
    return tiffCompression == kLzw || tiffCompression == kPackBits ? tiffCompression : kNoCompression;
}

std::string nameForType(std::string_view name, const SaveType &type) {
    const size_t start = name.rfind('/') + 1; // 0 without a folder
    if (start == name.size())
        return std::string(name);
    std::string_view stem = name;
    const size_t dot = name.rfind('.');
    if (dot != std::string_view::npos && dot > start) { // a dot in front hides the file
        const std::string_view suffix = name.substr(dot + 1);
        if (hasSuffix(type, suffix))
            return std::string(name);
        if (suffix.empty() || std::ranges::any_of(kSaveTypes, [suffix](const SaveType &other) {
                return hasSuffix(other, suffix);
            }))
            stem = name.substr(0, dot);
    }
    return std::string(stem) + '.' + type.suffixes.front();
}

} // namespace tristop
