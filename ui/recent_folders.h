// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QFileDialog;

namespace tristop {

/// Shows the folder used last, and offers those before it; the folder of pictures at first.
void showRecentFolders(QFileDialog &dialog);

/// Remembers the folder that a dialog has been confirmed in.
void rememberFolder(const QFileDialog &dialog);

} // namespace tristop
