// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/photograph_formats.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

namespace tristop {
namespace {

constexpr std::array<std::string_view, 3> kJpegSuffixes = {".jpg", ".jpeg", ".jpe"};

constexpr std::array<std::string_view, 33> kRawSuffixes = {
    ".3fr", ".ari", ".arw", ".bay", ".cap", ".cr2", ".cr3", ".crw", ".dcr", ".dng", ".erf",
    ".fff", ".gpr", ".iiq", ".k25", ".kdc", ".mef", ".mos", ".mrw", ".nef", ".nrw", ".orf",
    ".pef", ".ptx", ".pxn", ".raf", ".raw", ".rw2", ".rwl", ".sr2", ".srf", ".srw", ".x3f"};

} // namespace

std::optional<PhotographFormat> photographFormat(const std::string &path) {
    std::string suffix = std::filesystem::path(path).extension().string();
    std::ranges::transform(suffix, suffix.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    if (std::ranges::find(kJpegSuffixes, suffix) != kJpegSuffixes.end())
        return PhotographFormat::Jpeg;
    if (std::ranges::find(kRawSuffixes, suffix) != kRawSuffixes.end())
        return PhotographFormat::Raw;
    return std::nullopt;
}

} // namespace tristop
