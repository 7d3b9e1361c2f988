// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/theme.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>

namespace tristop {

namespace {

QPalette darkPalette() {
    using namespace theme;
    QPalette palette;
    const auto set = [&palette](QPalette::ColorRole role, const QColor &color, const QColor &disabled) {
        palette.setColor(QPalette::All, role, color);
        palette.setColor(QPalette::Disabled, role, disabled);
    };
    set(QPalette::Window, kWindow, kWindow);
    set(QPalette::WindowText, kText, kDisabledText);
    set(QPalette::Base, kField, kWindow);
    set(QPalette::AlternateBase, kWindow, kWindow);
    set(QPalette::Text, kText, kDisabledText);
    set(QPalette::PlaceholderText, kSecondaryText, kDisabledText);
    set(QPalette::Button, kControl, kPanel);
    set(QPalette::ButtonText, kText, kDisabledText);
    set(QPalette::BrightText, Qt::white, kDisabledText);
    set(QPalette::ToolTipBase, kControl, kControl);
    set(QPalette::ToolTipText, kText, kText);
    set(QPalette::Highlight, kSelection, kControl);
    set(QPalette::HighlightedText, Qt::white, kText);
    set(QPalette::Link, kLink, kDisabledText);
    set(QPalette::LinkVisited, kLink, kDisabledText);
    set(QPalette::Light, kControlHover, kControl);
    set(QPalette::Midlight, kControl, kControl);
    set(QPalette::Mid, kLine, kLine);
    set(QPalette::Dark, kField, kField);
    set(QPalette::Shadow, Qt::black, Qt::black);
    return palette;
}

/// Flat controls; each %name% is a colour.
constexpr char kStyleSheet[] = R"(
QMenuBar { background: transparent; spacing: 0; }
QMenuBar::item { background: transparent; padding: 4px 8px; margin: 0; border-radius: 4px; }
QMenuBar::item:selected { background: %control%; }
QMenuBar::item:pressed { background: %controlHover%; }
QMenu { background: %panel%; border: 1px solid %outline%; padding: 4px 0; }
QMenu::item { padding: 5px 32px 5px 24px; }
QMenu::item:selected { background: %selection%; color: white; }
QMenu::item:disabled { color: %disabledText%; background: transparent; }
QMenu::separator { height: 1px; background: %outline%; margin: 4px 0; }
QMenu::indicator { width: 14px; height: 14px; margin-left: 5px; }
QMenu::indicator:checked { image: url(:/theme/check.svg); }
QToolTip { background: %control%; color: %text%; border: 1px solid %outline%; padding: 3px 5px; }

QDialogButtonBox { dialogbuttonbox-buttons-have-icons: 0; }
QPushButton { background: %control%; border: 1px solid %outline%; border-radius: 5px; padding: 5px 14px;
    min-width: 56px; }
QPushButton:hover { background: %controlHover%; }
QPushButton:pressed { background: %panel%; }
QPushButton:default { background: %selection%; border-color: %accent%; color: white; }
QPushButton:default:hover { background: %selectionHover%; }
QPushButton:default:pressed { background: %panel%; }
QPushButton:disabled { background: %panel%; color: %disabledText%; border-color: %line%; }
QPushButton:focus { border: 2px solid %accent%; padding: 4px 13px; }
QPushButton:default:focus { border-color: white; }

QLabel[secondary="true"] { color: %secondaryText%; }
QCheckBox { spacing: 8px; }
QCheckBox::indicator { width: 14px; height: 14px; background: %control%; border: 1px solid %mark%;
    border-radius: 3px; }
QCheckBox::indicator:hover { background: %controlHover%; }
QCheckBox::indicator:checked { background: %selection%; border-color: %accent%; image: url(:/theme/check.svg); }
QCheckBox::indicator:focus { border: 2px solid %accent%; width: 12px; height: 12px; }
QCheckBox::indicator:disabled { background: %panel%; border-color: %outline%; }

QComboBox { combobox-popup: 0; background: %control%; border: 1px solid %outline%; border-radius: 5px; padding: 4px 8px; }
QComboBox:hover { background: %controlHover%; }
QComboBox:disabled { background: %panel%; color: %disabledText%; border-color: %line%; }
QComboBox:focus { border: 2px solid %accent%; padding: 3px 7px; }
QComboBox::drop-down { border: none; width: 22px; }
QComboBox::down-arrow { image: url(:/theme/down.svg); width: 10px; height: 10px; }
QComboBox::down-arrow:disabled { image: url(:/theme/down_disabled.svg); }
QComboBox QAbstractItemView { background: %panel%; border: 1px solid %outline%; outline: none;
    selection-background-color: %selection%; selection-color: white; }
QComboBox QAbstractItemView::item { min-height: 26px; padding: 0 6px; }

QLineEdit, QAbstractSpinBox { background: %field%; border: 1px solid %outline%; border-radius: 4px;
    padding: 4px 6px; selection-background-color: %selection%; selection-color: white; }
QLineEdit:focus, QAbstractSpinBox:focus { border: 1px solid %accent%; }
QComboBox QLineEdit { border: none; padding: 0; background: transparent; }

QHeaderView::section { background: %panel%; color: %secondaryText%; border: none;
    border-right: 1px solid %outline%; padding: 4px 8px; }
QToolButton { background: transparent; border: 1px solid transparent; border-radius: 4px; padding: 3px; }
QToolButton:hover { background: %controlHover%; }
QToolButton:checked, QToolButton:pressed { background: %control%; }
QToolButton:focus { border-color: %accent%; }

QScrollBar:vertical { background: transparent; width: 10px; margin: 0; }
QScrollBar:horizontal { background: transparent; height: 10px; margin: 0; }
QScrollBar::handle { background: %track%; border-radius: 3px; margin: 2px; }
QScrollBar::handle:vertical { min-height: 24px; }
QScrollBar::handle:horizontal { min-width: 24px; }
QScrollBar::handle:hover { background: %disc%; }
QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }
QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }

QProgressBar { background: %field%; border: none; border-radius: 2px; }
QProgressBar::chunk { background: %accent%; border-radius: 2px; }
)";

QString styleSheet() {
    using namespace theme;
    struct Name {
        const char *name;
        QColor color;
    };
    QString sheet = QString::fromLatin1(kStyleSheet);
    for (const auto &[name, color] :
         {Name{"panel", kPanel}, Name{"control", kControl}, Name{"controlHover", kControlHover},
          Name{"field", kField}, Name{"track", kTrack}, Name{"line", kLine}, Name{"outline", kOutline},
          Name{"text", kText}, Name{"secondaryText", kSecondaryText}, Name{"disabledText", kDisabledText},
          Name{"accent", kAccent}, Name{"selection", kSelection}, Name{"selectionHover", kSelectionHover},
          Name{"disc", kDisc}, Name{"mark", kDisabledText}})
        sheet.replace('%' + QLatin1String(name) + '%', color.name());
    return sheet;
}

} // namespace

void applyTheme(QApplication &application) {
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    QApplication::setPalette(darkPalette());
    application.setStyleSheet(styleSheet());
}

} // namespace tristop
