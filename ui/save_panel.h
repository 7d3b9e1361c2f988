// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include <QFileDialog>
#include <QPointer>

namespace tristop {

class IISaveViewController;

/**
 * The file dialog for saving, with the options view below its names. A name gets the suffix of the chosen
 * type before the question whether to replace an existing file. The options view is given back to its parent
 * when the dialog goes.
 */
class SavePanel : public QFileDialog {
    Q_OBJECT

public:
    /// `isProtected` tells which files must not be replaced; the panel refuses them and stays open.
    SavePanel(QWidget *window, IISaveViewController *accessoryView,
              std::function<bool(const QString &path)> isProtected);
    ~SavePanel() override;

    void accept() override;
    void done(int result) override;

private:
    void giveAccessoryBack();

    QPointer<IISaveViewController> accessory; ///< null once given back
    QPointer<QWidget> accessoryHome;
    std::function<bool(const QString &path)> isProtected;
};

} // namespace tristop
