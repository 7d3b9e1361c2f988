// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <optional>

#include <QFileDialog>
#include <QList>
#include <QPointer>
#include <QUrl>

#include "ui/hdr_error.h"

namespace tristop {

/// Lets the user choose three photographs.
class CBHDROpenController {
public:
    /// The chosen files in the panel's order, or an error.
    using CompletionHandler =
        std::function<void(const QList<QUrl> &urls, const std::optional<HdrError> &error)>;

    CBHDROpenController() = default;
    ~CBHDROpenController();
    CBHDROpenController(const CBHDROpenController &) = delete;
    CBHDROpenController &operator=(const CBHDROpenController &) = delete;

    bool allowsMultipleSelection() const { return multipleSelection; }
    void setAllowsMultipleSelection(bool allows) { multipleSelection = allows; }

    /**
     * Shows the open panel as a sheet of `window` and returns at once. The handler is called when the user
     * has chosen; not when the panel is cancelled. While a panel is shown a second call brings it to the
     * front.
     */
    void open(QWidget *window, const CompletionHandler &completionHandler);

    /// Whether a selection may be confirmed. Tells the user on the panel when it is not of exactly three
    /// files.
    bool panel(QFileDialog *panel, const QList<QUrl> &validateURL) const;

    /// The panel that is shown, or null.
    QFileDialog *openPanel() const { return shownPanel; }

    /// The panel's filters: photographs of every type that can be chosen first, then the single types.
    static QStringList nameFilters();
    /// Whether the panel lets a file of this name be chosen.
    static bool allowsFile(const QUrl &url);

private:
    bool multipleSelection = true;
    QPointer<QFileDialog> shownPanel;
};

} // namespace tristop
