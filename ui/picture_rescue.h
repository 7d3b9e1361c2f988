// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include <QImage>
#include <QString>

namespace tristop {

/**
 * Keeps the unsaved picture when the application ends without having been able to ask: its display is gone,
 * or a signal tells it to end.
 *
 * While one of these lives, exit(), by which Qt ends a program whose display is gone, rescues. There is one
 * at most. The picture becomes a PNG file in a folder "Tristop", named by date and time, and a note tells the
 * next start of it.
 */
class PictureRescue {
public:
    /// Among the user's pictures, where everybody looks for pictures, else where the application keeps its
    /// data; the note lies there, too.
    PictureRescue();
    /// With places to be tried in turn, and the note's file.
    PictureRescue(const QStringList &places, const QString &note);
    /// The application ends by itself.
    ~PictureRescue();
    PictureRescue(const PictureRescue &) = delete;
    PictureRescue &operator=(const PictureRescue &) = delete;

    /// The picture to rescue, of the format RGB32; null for none.
    void setUnsavedPicture(const QImage &picture);

    /// Writes the unsaved picture, once, and tells where on the standard error. The file's path; empty when
    /// there is nothing to write or nowhere it can be written. On any thread.
    std::string rescue();

    /// The picture that was rescued when the application ended last, or empty; told once.
    QString takeRescued() const;

private:
    friend void rescueNow();

    std::string write();

    QImage unsavedPicture;
    std::vector<std::string> places;
    std::string note;
    std::string told; ///< with %1 for the path
};

} // namespace tristop
