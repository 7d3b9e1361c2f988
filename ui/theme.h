// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>

class QApplication;

namespace tristop {

/// The colours of the application: neutral greys, so that nothing near a picture tints what the eye sees of
/// it.
namespace theme {

inline constexpr QColor kWindow{31, 31, 31};       ///< behind everything
inline constexpr QColor kField{22, 22, 22};        ///< texts to edit, lists, histogram
inline constexpr QColor kTitlebar{41, 41, 41};     ///< title strip
inline constexpr QColor kPanel{41, 41, 41};        ///< groups of controls, menus
inline constexpr QColor kBoxTop{46, 46, 46};       ///< upper end of a group's gradient
inline constexpr QColor kBoxTab{64, 64, 64};       ///< title and frame of a group
inline constexpr QColor kControl{58, 58, 58};      ///< buttons and lists
inline constexpr QColor kControlHover{71, 71, 71}; ///< the same under the pointer
inline constexpr QColor kTrack{88, 88, 88};        ///< track of a slider
inline constexpr QColor kHandle{208, 208, 208};    ///< handle of a slider
inline constexpr QColor kLine{52, 52, 52};         ///< separators
inline constexpr QColor kOutline{78, 78, 78};      ///< around controls
inline constexpr QColor kDisc{96, 96, 96};         ///< buttons of the title bar
inline constexpr QColor kDiscHover{126, 126, 126};
inline constexpr QColor kDiscClose{200, 72, 64};
inline constexpr QColor kText{226, 226, 226};
inline constexpr QColor kSecondaryText{172, 172, 172}; ///< captions and hints
inline constexpr QColor kDisabledText{118, 118, 118};
inline constexpr QColor kAccent{59, 153, 252};         ///< focus, and what is set
inline constexpr QColor kSelection{32, 98, 172};       ///< behind white text
inline constexpr QColor kSelectionHover{38, 110, 190}; ///< the same under the pointer
inline constexpr QColor kLink{120, 184, 253};

/// Distances are multiples of this, in logical pixels.
inline constexpr int kGrid = 8;

} // namespace theme

/// Gives an application its style, colours and style sheet.
void applyTheme(QApplication &application);

} // namespace tristop
