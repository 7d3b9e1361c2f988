// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QFileDialog;

namespace tristop {

/// Shows the folder used last, the folder of pictures at first, and offers the places where photographs are
/// usually found.
void showRecentFolders(QFileDialog &dialog);

/// Remembers the folder that a dialog has been confirmed in.
void rememberFolder(const QFileDialog &dialog);

} // namespace tristop
