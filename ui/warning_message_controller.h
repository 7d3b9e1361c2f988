// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>

#include <QDialog>

class QLabel;
class QPushButton;

namespace Ui {
class IIWarningMessageController;
}

namespace tristop {

/// A sheet with a message, a comment and up to three buttons. Set the texts, then begin it.
class IIWarningMessageController : public QDialog {
    Q_OBJECT

public:
    /// How the sheet was ended.
    enum Result { Other = -1, Cancelled = 0, Confirmed = 1 };

    explicit IIWarningMessageController(QWidget *parent = nullptr);
    ~IIWarningMessageController() override;

    QString warningMessage() const { return warning; }
    void setWarningMessage(const QString &text) { warning = text; }
    QString promptMessage() const { return prompt; }
    void setPromptMessage(const QString &text) { prompt = text; }
    QString okMessage() const { return okTitle; }
    void setOkMessage(const QString &text) { okTitle = text; }
    QString cancelMessage() const { return cancelTitle; }
    void setCancelMessage(const QString &text) { cancelTitle = text; }
    QString extendMessage() const { return extendTitle; }
    void setExtendMessage(const QString &text) { extendTitle = text; }

    QPushButton *okButn() const;
    QPushButton *cancelButn() const;
    QPushButton *otherButn() const;
    QLabel *iconView() const;
    QLabel *messageField() const;
    QLabel *commentField() const;

    /**
     * Shows the sheet on the window given as parent and returns at once. When it has ended, by a button or by
     * Escape (as Cancel), it is hidden and the handler is told the result.
     */
    void beginSheet(std::function<void(int result)> didEnd);

    void ok() { done(Confirmed); }
    void cancel() { done(Cancelled); }
    void other() { done(Other); }

private:
    void windowDidLoad();

    std::unique_ptr<Ui::IIWarningMessageController> ui;
    QString warning, prompt, okTitle, cancelTitle, extendTitle;
};

} // namespace tristop
