// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <span>

#include <QPointer>
#include <QStringList>
#include <QWidget>

#include "app/save_options.h"

class QFileDialog;

namespace Ui {
class IISaveViewController;
}

namespace tristop {

/**
 * The options view of the save panel: the type of the file and a page of options for it. The options do not
 * reach the file, which is written in the standard quality; the view says so.
 */
class IISaveViewController : public QWidget {
    Q_OBJECT

public:
    explicit IISaveViewController(QWidget *parent = nullptr);
    ~IISaveViewController() override;

    QString saveUTI() const;
    void setSaveUTI(const QString &uti);
    float jpegQuality() const { return options.jpegQuality; }
    void setJpegQuality(float quality);
    int64_t tiffCompression() const { return options.tiffCompression; }
    void setTiffCompression(int64_t compression);
    bool hasAlpha() const { return options.hasAlpha; }
    void setHasAlpha(bool alpha) { options.hasAlpha = alpha; }

    QString saveType() const { return saveUTI(); }
    /// Chooses a type; the panel then takes names of that type only.
    void setSaveType(const QString &uti);
    int saveTab() const { return options.saveTab(); }
    float saveQuality() const { return jpegQuality(); }
    void setSaveQuality(float quality) { setJpegQuality(quality); }
    int64_t saveCompression() const { return options.saveCompression(); }
    void setSaveCompression(int64_t compression) { setTiffCompression(compression); }
    /// The types that can be chosen, in the order of the menu.
    static std::span<const SaveType> saveTypes() { return SaveOptions::saveTypes(); }
    static QStringList writableTypes();

    /// Back to PNG, 0.9 and no compression.
    void resetOptions();

    /// The panel that hosts this view; not owned.
    void setPanel(QFileDialog *panel);
    const SaveOptions &saveOptions() const { return options; }

signals:
    void saveTabChanged(int saveTab);

private:
    void showOptions();

    std::unique_ptr<Ui::IISaveViewController> ui;
    SaveOptions options;
    QPointer<QFileDialog> hostPanel;
};

} // namespace tristop
