// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>

#include <QImage>
#include <QList>
#include <QPointer>
#include <QTimer>
#include <QUrl>
#include <QWidget>

#include "app/background_worker.h"
#include "app/document.h"
#include "app/file_error.h"
#include "app/hdr_engine_bridge.h"
#include "app/picture_encoding.h"
#include "app/pixels.h"
#include "app/zoom.h"
#include "ui/adjust_view_controller.h"
#include "ui/hdr_error.h"
#include "ui/image_clip.h"

class QFileDialog;
class QPrinter;

namespace Ui {
class IIEditingViewController;
}

namespace tristop {

class CBHDROpenController;
class IIImageView;
class IISaveViewController;
class IIWarningMessageController;
class MLColoredButton;
class MMWaitingWindowController;
class Sharing;

/**
 * Controller and view of the one document: the merge of three photographs. Opens, checks and merges them,
 * applies the settings of the side panel, shows the picture, and saves, prints and shares it.
 *
 * Everything is called on the GUI thread. Reading, merging and writing run on one background thread behind a
 * progress window; destroying the controller meanwhile cancels the merge and waits for the thread.
 */
class IIEditingViewController : public QWidget,
                                public IIAdjustViewControllerDelegate,
                                public IIImageClipDelegate {
    Q_OBJECT

public:
    explicit IIEditingViewController(QWidget *parent = nullptr);
    ~IIEditingViewController() override;

    /// 0 fit, 1 actual size, 2 free factor.
    int64_t zoomMode() const { return static_cast<int64_t>(zoomState.mode); }
    double zoomFactor() const { return zoomState.factor; }
    IIAdjustViewController *adjustViewController() const { return adjust; }
    /// The progress window of the run underway, or null.
    MMWaitingWindowController *waitingWindowController() const;
    /// The print settings chosen in the page set-up; null before.
    const std::shared_ptr<QPrinter> &imagePrintInfo() const { return printInfo; }
    void setImagePrintInfo(std::shared_ptr<QPrinter> settings) { printInfo = std::move(settings); }
    IIImageView *imageView() const { return picture; }
    IIImageClip *imageClip() const;
    /// Whether the shown picture has not been saved since it was produced; empty before the first.
    std::optional<bool> isDirty() const { return document.isDirty; }
    IISaveViewController *saveViewController() const { return saveOptionsView; }
    /// The sheet that is shown, or null.
    IIWarningMessageController *warningMessageController() const;
    CBHDROpenController *openController() const { return opener.get(); }
    /// The place of the side panel.
    QWidget *adjustView() const;
    /// Hidden until the first merge has been shown.
    MLColoredButton *saveButn() const;
    MLColoredButton *shareButn() const;
    /// Made on first use and kept. While a run is underway it belongs to the background thread.
    const std::shared_ptr<IHDREngineController> &engineController();

    bool hasImage() const;
    bool needSave() const { return document.needSave(); }
    /// Whether a reading, merging or writing is underway.
    bool isRunning() const { return running.has_value(); }

    // Opening and merging.

    /// The Open command: lets the user choose three photographs, after asking about an unsaved picture.
    void openTile();
    /// For photographs that were dropped or named on the command line: the rules of the open panel, then
    /// openURLs. Ignored while a run is underway.
    void offerURLs(const QList<QUrl> &urls);
    /// Checks the photographs and merges them, after the run underway if there is one. The document stays as
    /// it is when a check or the merge fails.
    void openURLs(const QList<QUrl> &urls);
    /// Merges again with other settings.
    void process(int64_t toneLength, int64_t birghtness, int64_t toneSaturation,
                 int32_t ghostSuppressionLevel);
    void engineSettingsChanged(int64_t toneLength, int64_t toneSaturation, int64_t brightenss,
                               int32_t ghost) override;
    /// Renders the colour effect again.
    void effectSettingsChanged(int64_t contrast, int64_t saturation, int64_t style) override;
    /// Ends the progress window, if there is one.
    void closeWaitingWindow();
    /// Whether a path names a JPEG, TIFF or camera RAW file.
    static bool isSupportImage(const QString &path);
    static bool isImageItemExist(const QString &path);
    /// `reason` is for the log.
    static HdrError error(const QString &localizedDescription, const QString &reason = {});

    // Saving, printing and sharing.

    /// Result of the save panel, 1 for Save or 0 for Cancel, and the panel with the chosen file.
    using SaveCompletion = std::function<void(int result, QFileDialog *panel)>;
    /// Runs the save panel as a sheet.
    void save(const SaveCompletion &completion);
    /// The Save command.
    void saveAs();
    /// Writes a picture as tristop::save of app/picture_saving.h does; `reason` gets what went wrong.
    static bool save(const QImage &picture, const QImage &original, const QString &url, const QString &type,
                     const EncodingOptions &options, FileError *reason = nullptr);
    static bool saveTIFF(const QImage &picture, const QImage &original, const QString &url,
                         const EncodingOptions &options);
    /// A flattened copy; null without a picture.
    static QImage resultImage(const QImage &picture);
    QImage displayImage() const;
    void print();
    void printSetup();
    /// Offers the picture to other programs, in a menu at the share button.
    void shareAction();
    void showFailedWarning(const QString &text);
    /// The unsaved-changes sheet; `didEnd` is told which button ended it.
    void showUnsaveWarning(const std::function<void(int returnCode)> &didEnd);
    void unsaveWarningSheetDidEnd(int returnCode);
    void unsaveWarningTerminateSheetDidEnd(int returnCode);
    /// Whether the application may quit: 1 now, 2 when terminateAnswered tells.
    int64_t terminate();
    /// Whether a command, by its operation's name ("saveAs:"), is enabled.
    bool validateUserInterfaceItem(const char *action) const;

    /// Says something on the status line.
    void tell(const QString &text);

    // Zoom.

    void zoomFit();
    void zoomActual();
    void zoomIn();
    void zoomOut();
    /// A zoom segment: 0 out, 1 in, 2 fit, 3 actual size.
    void zoom(int segment);
    void zoomImage(double factor);
    void updateZoom();
    void imageClipDoubleClick(IIImageClip *clip) override;
    void imageClipMagnify(IIImageClip *clip, double value) override;
    void imageClipScrollWheel(IIImageClip *clip, double delta) override;

signals:
    /// What validateUserInterfaceItem answers may have changed, or the document's dirty state has.
    void userInterfaceStateChanged();
    /// Answer to a quit that terminate put off.
    void terminateAnswered(bool quit);
    /// A run has ended and its progress window is closed.
    void runEnded();
    /// What the status line says.
    void statusTold(const QString &text);

protected:
    void changeEvent(QEvent *event) override;

private:
    struct Rendering;
    struct MergeSettings {
        int64_t toneLength, brightness, toneSaturation;
        int32_t ghostLevel;
    };
    struct EffectSettings {
        int64_t contrast, saturation, style;
    };
    /// What ended a run early, to be told on the status line.
    using Failure = std::optional<HdrError>;
    /// Work for the background thread; what it throws ends the run with a failure.
    using Task = std::function<Failure()>;
    using TaskEnd = std::function<void(const Failure &failure)>;

    // One piece of background work at a time, behind its progress window.
    /// Calls `start`, which starts a run, now or after the run underway, whose picture it then works with.
    void whenIdle(std::function<void()> start);
    void startRun(const QString &description, Task task, TaskEnd didEnd = {});
    void endRun(uint64_t run, const Failure &failure, const TaskEnd &didEnd);
    void startNextRun();
    template <typename Action>
    void post(Action action);

    void placeViews();
    void showTexts();
    void updateControls();
    void tell(const HdrError &error);

    void runOpenPanel();
    void startMerge(const MergeSettings &settings);
    void startEffect(const EffectSettings &settings);
    Failure readAndMerge(IHDREngineController &bridge, const QStringList &paths, int thumbnailSide);
    /// `photographs` begin with the three that are merged.
    Failure merge(IHDREngineController &bridge, const MergeSettings &settings,
                  const std::vector<std::string> &photographs);
    Failure renderEffect(IHDREngineController &bridge, const EffectSettings &settings);
    void showThumbnails(const QList<QImage> &thumbnails, const QStringList &paths);
    void showRendering(const Rendering &rendering);

    /// Writes the picture to the file chosen in the panel. False, and nothing is told, when it gives none.
    bool write(QFileDialog *panel, std::function<void(const QString &path)> written,
               std::function<void()> failed = {});
    IIWarningMessageController *makeWarning();
    void beginWarning(std::function<void(int returnCode)> didEnd);
    void answerTermination(bool quit);
    std::shared_ptr<QPrinter> printSettings();
    Sharing *sharingServices();
    void withSharedFile(const std::function<void(const QString &path)> &use);

    std::unique_ptr<Ui::IIEditingViewController> ui;
    /// Keeps blocks of one run for the next, until none has followed for a while.
    PixelReserve pixelReserve;
    QTimer reserveTimer;
    Document document;
    ZoomState zoomState;
    IIAdjustViewController *adjust = nullptr;
    IIImageView *picture = nullptr;
    QPointer<MMWaitingWindowController> waiting;
    std::shared_ptr<QPrinter> printInfo;
    IISaveViewController *saveOptionsView = nullptr;
    QPointer<IIWarningMessageController> warning;
    QPointer<QFileDialog> savePanel;
    std::unique_ptr<CBHDROpenController> opener;
    std::shared_ptr<IHDREngineController> engine;
    Sharing *sharing = nullptr;

    /// Dropped photographs that wait for the unsaved-changes sheet; without any, the open panel follows it.
    std::optional<QList<QUrl>> offeredURLs;
    bool terminationPending = false;
    /// The engine's inputs were replaced and no picture of them has been shown yet.
    bool isNewDocument = false;

    uint64_t lastRun = 0;
    std::optional<uint64_t> running;
    // What was asked for during a run, the latest of each kind.
    std::optional<MergeSettings> nextMerge;
    std::optional<EffectSettings> nextEffect;
    std::deque<std::function<void()>> nextRuns;

    std::shared_ptr<std::atomic<bool>> cancelled = std::make_shared<std::atomic<bool>>(false);
    /// Goes first: it waits for the task underway.
    std::unique_ptr<BackgroundWorker> worker;
};

} // namespace tristop
