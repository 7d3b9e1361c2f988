// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tristop {

/// What is known of the one document: the merge of three photographs.
struct Document {
    /// The photographs that the shown picture was made of.
    std::vector<std::string> photographs;
    bool hasImage = false;
    /// Whether the shown picture has not been saved since it was made; empty before the first.
    std::optional<bool> isDirty;
    /// The file of the latest save; empty when the shown picture is in none.
    std::string savedPath;

    bool needSave() const { return isDirty.value_or(false); }
    /// A new picture is shown.
    void pictureShown();
    /// The shown picture has been written to a file.
    void pictureSaved(const std::string &path);
    /// Whether writing to `path` would replace one of the photographs, by whatever name.
    bool isPhotograph(const std::string &path) const;
    /// Whether a command ("saveAs:") can be used now.
    bool validateUserInterfaceItem(std::string_view action) const;
};

} // namespace tristop
