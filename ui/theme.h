// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>

class QApplication;

namespace tristop {

/// The colours of the application: neutral greys, so that nothing near a picture tints what the eye sees of
/// it.
namespace theme {

inline constexpr QColor kWindow{31, 31, 31};       ///< behind everything
inline constexpr QColor kTitlebar{41, 41, 41};     ///< title strip and menus
inline constexpr QColor kPanel{41, 41, 41};        ///< groups of controls
inline constexpr QColor kControl{61, 61, 61};      ///< buttons and lists
inline constexpr QColor kControlHover{72, 72, 72}; ///< the same under the pointer
inline constexpr QColor kTrack{82, 82, 82};        ///< track of a slider
inline constexpr QColor kLine{58, 58, 58};         ///< frames and separators
inline constexpr QColor kText{226, 226, 226};
inline constexpr QColor kSecondaryText{172, 172, 172}; ///< captions and hints
inline constexpr QColor kDisabledText{125, 125, 125};
inline constexpr QColor kAccent{59, 153, 252};

/// The grid that distances are multiples of, in logical pixels.
inline constexpr int kGrid = 8;

} // namespace theme

/// Gives an application its style, colours and style sheet.
void applyTheme(QApplication &application);

} // namespace tristop
