// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/document.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>

namespace tristop {

void Document::photographsRead(const std::vector<std::string> &paths) {
    photographs.insert(photographs.begin(), paths.begin(), paths.end());
    readLast = paths.size();
}

void Document::forgetFormerPhotographs() {
    photographs.resize(readLast);
}

void Document::pictureShown() {
    hasImage = true;
    isDirty = true;
    savedPath.clear();
}

void Document::pictureSaved(const std::string &path) {
    isDirty = false;
    savedPath = path;
}

bool Document::isPhotograph(const std::string &path) const {
    return std::ranges::any_of(photographs, [&path](const std::string &photograph) {
        std::error_code error;
        return photograph == path || std::filesystem::equivalent(photograph, path, error);
    });
}

bool Document::validateUserInterfaceItem(std::string_view action) const {
    using namespace std::string_view_literals;
    constexpr std::array kNeedPicture = {"saveAs:"sv, "print:"sv,      "zoomFit:"sv,
                                         "zoomIn:"sv, "zoomActual:"sv, "zoomOut:"sv};
    return hasImage || std::ranges::find(kNeedPicture, action) == kNeedPicture.end();
}

} // namespace tristop
