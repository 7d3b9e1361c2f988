// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tristop {

/// What is known of the one document: the merge of three photographs.
struct Document {
    /// The photographs that were read last, then those that the shown picture was made of if they are others.
    std::vector<std::string> photographs;
    bool hasImage = false;
    /// Whether the shown picture has not been saved since it was made; empty before the first.
    std::optional<bool> isDirty;
    /// The file of the latest save of the shown picture; empty when there is none.
    std::string savedPath;

    bool needSave() const { return isDirty.value_or(false); }
    /// Three photographs were read, which the next picture will be made of.
    void photographsRead(const std::vector<std::string> &paths);
    /// The shown picture was made of the photographs read last.
    void forgetFormerPhotographs();
    /// A new picture is shown.
    void pictureShown();
    /// The shown picture has been written to a file.
    void pictureSaved(const std::string &path);
    /// Whether writing to `path` would replace one of the photographs, by whatever name.
    bool isPhotograph(const std::string &path) const;
    /// Whether a command ("saveAs:") can be used now.
    bool validateUserInterfaceItem(std::string_view action) const;

private:
    size_t readLast = 0;
};

} // namespace tristop
