// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/photograph_type.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

namespace tristop {
namespace {

using namespace std::string_view_literals;

constexpr std::array kJpegSuffixes = {"jpg"sv, "jpeg"sv, "jpe"sv};
constexpr std::array kTiffSuffixes = {"tif"sv, "tiff"sv};
/// What cameras call their RAW files; the system's table of media types lacks some.
constexpr std::array kRawSuffixes = {
    "3fr"sv, "ari"sv, "arw"sv, "bay"sv, "bmq"sv, "cap"sv, "cine"sv, "cr2"sv, "cr3"sv, "crw"sv,
    "cs1"sv, "dc2"sv, "dcr"sv, "dcs"sv, "dng"sv, "drf"sv, "dsc"sv,  "erf"sv, "fff"sv, "ia"sv,
    "iiq"sv, "k25"sv, "kc2"sv, "kdc"sv, "mdc"sv, "mef"sv, "mfw"sv,  "mos"sv, "mrw"sv, "nef"sv,
    "nrw"sv, "obm"sv, "orf"sv, "ori"sv, "pef"sv, "ptx"sv, "pxn"sv,  "qtk"sv, "raf"sv, "raw"sv,
    "rdc"sv, "rw2"sv, "rwl"sv, "rwz"sv, "sr2"sv, "srf"sv, "srw"sv,  "sti"sv, "x3f"sv};

} // namespace

std::span<const std::string_view> suffixesOf(PhotographType type) {
    switch (type) {
    case PhotographType::Jpeg:
        return kJpegSuffixes;
    case PhotographType::Tiff:
        return kTiffSuffixes;
    case PhotographType::Raw:
        break;
    }
    return kRawSuffixes;
}

std::optional<PhotographType> typeBySuffix(const std::string &path) {
    std::string suffix = std::filesystem::path(path).extension().string();
    if (suffix.empty())
        return std::nullopt;
    suffix.erase(0, 1);
    std::ranges::transform(suffix, suffix.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    for (const PhotographType type : {PhotographType::Jpeg, PhotographType::Tiff, PhotographType::Raw})
        if (std::ranges::find(suffixesOf(type), suffix) != suffixesOf(type).end())
            return type;
    return std::nullopt;
}

} // namespace tristop
