// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace tristop {

/// How an item of an image list gives its image.
enum class ImageRepresentationType { Path };

/// A file in an image list.
class IIImageItem {
public:
    const QString &imagePath() const { return path; }
    void setImagePath(const QString &imagePath) { path = imagePath; }
    bool isSelectable() const { return selectable; }
    void setIsSelectable(bool isSelectable) { selectable = isSelectable; }

    ImageRepresentationType imageRepresentationType() const { return ImageRepresentationType::Path; }
    const QString &imageRepresentation() const { return path; }
    /// Tells items apart.
    const QString &imageUID() const { return path; }
    /// The file's name without folder and extension.
    QString imageTitle() const;

private:
    QString path;
    bool selectable = false;
};

} // namespace tristop
