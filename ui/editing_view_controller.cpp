// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/editing_view_controller.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <exception>
#include <iterator>
#include <new>

#include <QApplication>
#include <QEvent>
#include <QFileInfo>
#include <QPrinter>

#include "IICommon/colored_button.h"
#include "app/photographs.h"
#include "app/picture_saving.h"
#include "app/reduced_photograph.h"
#include "app/yuv_rgb.h"
#include "ui/image_view.h"
#include "ui/image_view_controller.h"
#include "ui/localized_text.h"
#include "ui/logging.h"
#include "ui/open_controller.h"
#include "ui/platform_images.h"
#include "ui/popup_image_view.h"
#include "ui/save_panel.h"
#include "ui/save_view_controller.h"
#include "ui/theme.h"
#include "ui/waiting_window_controller.h"
#include "ui/warning_message_controller.h"
#include "ui_IIEditingViewController.h"

namespace tristop {
namespace {

/// Between two sliders that a user moves one after the other, and less than a look at something else takes.
constexpr std::chrono::seconds kReserveTime{30};

QString fileName(const std::string &path) {
    return QFileInfo(QString::fromStdString(path)).fileName();
}

/// A text about a file.
HdrError fileError(const std::string &path, const char *key, const std::string &reason) {
    return IIEditingViewController::error(
        localizedText("IDS_FILE_REASON").arg(fileName(path), localizedText(key)),
        QString::fromStdString(path + ' ' + reason));
}

HdrError namedError(const char *key, const QString &reason) {
    return IIEditingViewController::error(localizedText(key), reason);
}

HdrError checkError(const PhotographError &problem) {
    switch (problem.kind) {
    case PhotographError::Kind::TooSmall:
        return fileError(problem.path, "IDS_RESOLUTION_SMALL_ERROR", problem.reason);
    case PhotographError::Kind::OtherSize:
        return fileError(problem.path, "IDS_RESOLUTION_DIFFERENT_ERROR", problem.reason);
    case PhotographError::Kind::Unreadable:
        break;
    }
    return fileError(problem.path, "IDS_LOAD_FAILED", problem.reason);
}

HdrError memoryError() {
    return namedError("IDS_NO_MEMORY", "there is not enough memory");
}

HdrError mergeError(HdrStatus status) {
    const QString reason = QStringLiteral("the merge ended with status %1").arg(status);
    switch (status) {
    case HDR_ERR_NOMEM:
        return memoryError();
    case HDR_ERR_SHIFT:
        return namedError("IDS_MERGE_TOO_FAR", reason);
    case HDR_ERR_ALIGN:
        return namedError("IDS_MERGE_UNALIGNED", reason);
    case HDR_ERR_ORDER:
        return namedError("IDS_MERGE_ORDER", reason);
    default:
        return namedError("IDS_MERGE_FAILED", reason);
    }
}

void styleButton(MLColoredButton &button, const QColor &fill, const QColor &title) {
    button.setBackgroundColor(fill);
    button.setTextColor(title);
    button.setDisableTextColor(theme::kDisabledText);
}

} // namespace

/// A picture to show and what is told of it.
struct IIEditingViewController::Rendering {
    QImage image;
    IIHistogramData histogram;

    /// Of a BGR picture with rows bgrLineBytes(width) apart; without an image when there is none or not
    /// enough memory.
    Rendering(const uint8_t *bgr, int32_t width, int32_t height) {
        if (bgr == nullptr || width < 1 || height < 1)
            return;
        if (auto bgrx = CBYUVRGB::bgr2image(bgr, width, height, bgrLineBytes(width), histogram))
            image = platformImage(std::move(*bgrx));
    }
};

IIEditingViewController::IIEditingViewController(QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::IIEditingViewController>()),
      opener(std::make_unique<CBHDROpenController>()), worker(std::make_unique<BackgroundWorker>()) {
    ui->setupUi(this);
    reserveTimer.setSingleShot(true);
    reserveTimer.setInterval(kReserveTime);
    connect(&reserveTimer, &QTimer::timeout, this, [this] { worker->start(&PixelReserve::giveBack); });
    placeViews();
    showTexts();
    updateControls();
    ui->openButn->setFocus();
}

IIEditingViewController::~IIEditingViewController() {
    *cancelled = true;
    worker.reset();
    closeWaitingWindow();
    delete warning;
    delete savePanel;
}

void IIEditingViewController::placeViews() {
    picture = new IIImageView;
    ui->imageClip->setDocument(picture);
    ui->imageClip->setClipDelegate(this);
    connect(ui->imageClip, &IIImageClip::frameChanged, this, [this] {
        if (zoomState.mode == ZoomMode::Fit && hasImage())
            updateZoom();
    });

    adjust = new IIAdjustViewController(engineController());
    adjust->setDelegate(this);
    adjust->setEditingViewController(this);
    ui->adjustPlace->addWidget(adjust);

    saveOptionsView = new IISaveViewController(this);
    saveOptionsView->hide();

    styleButton(*ui->openButn, theme::kAccent, theme::kWindow);
    styleButton(*ui->saveButn, theme::kAccent, theme::kWindow);
    styleButton(*ui->shareButn, theme::kControl, theme::kText);
    for (QLabel *quiet : {ui->emptyHint, ui->zoomField, static_cast<QLabel *>(ui->statusField)}) {
        QPalette palette = quiet->palette();
        palette.setColor(QPalette::WindowText, theme::kSecondaryText);
        quiet->setPalette(palette);
    }
    ui->statusField->setContentsMargins(theme::kGrid / 2, 0, theme::kGrid / 2, 0); // in line with the panel
    QFont large = ui->emptyTitle->font();
    large.setPointSizeF(large.pointSizeF() * 1.4);
    ui->emptyTitle->setFont(large);

    connect(ui->openButn, &QPushButton::clicked, this, [this] { openTile(); });
    connect(ui->saveButn, &QPushButton::clicked, this, [this] { saveAs(); });
    connect(ui->shareButn, &QPushButton::clicked, this, [this] { shareAction(); });
    ui->zoomSegments->setStyleSheet(
        QStringLiteral("QToolButton { background: %1; }"
                       "QToolButton:hover { background: %2; }"
                       "QToolButton:disabled { background: %3; }")
            .arg(theme::kControl.name(), theme::kControlHover.name(), theme::kPanel.name()));
    int segment = 0;
    for (QToolButton *button :
         {ui->zoomOutSegment, ui->zoomInSegment, ui->zoomFitSegment, ui->zoomActualSegment}) {
        button->setFixedSize(button == ui->zoomFitSegment || button == ui->zoomActualSegment ? 48 : 32, 32);
        connect(button, &QToolButton::clicked, this, [this, segment] { zoom(segment); });
        ++segment;
    }
}

void IIEditingViewController::showTexts() {
    ui->emptyTitle->setText(localizedText("IDS_EMPTY_TITLE"));
    ui->emptyHint->setText(localizedText("IDS_EMPTY_HINT"));
    ui->openButn->setText(localizedText("IDS_OPEN"));
    ui->saveButn->setText(localizedText("IDS_SAVE"));
    ui->shareButn->setText(localizedText("IDS_SHARE"));
    ui->imageClip->setAccessibleName(localizedText("IDS_PICTURE"));
    ui->statusField->setAccessibleName(localizedText("IDS_STATUS"));
    const auto name = [](QToolButton *button, const QString &face, const char *key) {
        button->setText(face);
        button->setToolTip(localizedText(key));
        button->setAccessibleName(localizedText(key));
    };
    name(ui->zoomOutSegment, QStringLiteral("−"), "IDS_ZOOM_OUT");
    name(ui->zoomInSegment, QStringLiteral("+"), "IDS_ZOOM_IN");
    name(ui->zoomFitSegment, localizedText("IDS_ZOOM_FIT_SHORT"), "IDS_ZOOM_FIT");
    name(ui->zoomActualSegment, QStringLiteral("1:1"), "IDS_ZOOM_ACTUAL");
}

void IIEditingViewController::updateControls() {
    const bool shown = hasImage();
    ui->imageClip->setFocusPolicy(shown ? Qt::StrongFocus : Qt::NoFocus);
    if (shown && ui->openButn->hasFocus())
        ui->imageClip->setFocus();
    ui->emptyState->setVisible(!shown);
    ui->saveButn->setVisible(shown);
    ui->shareButn->setVisible(shown);
    ui->zoomSegments->setEnabled(shown);
    ui->zoomField->setVisible(shown);
    emit userInterfaceStateChanged();
}

void IIEditingViewController::changeEvent(QEvent *event) {
    if (event->type() == QEvent::LanguageChange)
        showTexts();
    QWidget::changeEvent(event);
}

IIImageClip *IIEditingViewController::imageClip() const {
    return ui->imageClip;
}

MMWaitingWindowController *IIEditingViewController::waitingWindowController() const {
    return waiting;
}

IIWarningMessageController *IIEditingViewController::warningMessageController() const {
    return warning;
}

QWidget *IIEditingViewController::adjustView() const {
    return ui->adjustView;
}

MLColoredButton *IIEditingViewController::saveButn() const {
    return ui->saveButn;
}

MLColoredButton *IIEditingViewController::shareButn() const {
    return ui->shareButn;
}

const std::shared_ptr<IHDREngineController> &IIEditingViewController::engineController() {
    if (!engine) {
        engine = std::make_shared<IHDREngineController>();
        engine->meEngine()->cancelRequested = [flag = cancelled] { return flag->load(); };
    }
    return engine;
}

bool IIEditingViewController::hasImage() const {
    return !picture->image().isNull();
}

bool IIEditingViewController::validateUserInterfaceItem(const char *action) const {
    return document.validateUserInterfaceItem(action);
}

HdrError IIEditingViewController::error(const QString &localizedDescription, const QString &reason) {
    return {.localizedDescription = localizedDescription, .reason = reason};
}

void IIEditingViewController::tell(const QString &text) {
    qCInfo(lcTristop).noquote() << text;
    ui->statusField->tell(text);
    emit statusTold(text);
}

void IIEditingViewController::tell(const HdrError &error) {
    qCWarning(lcTristop).noquote() << error.reason;
    ui->statusField->tell(error.localizedDescription);
    emit statusTold(error.localizedDescription);
}

// Background work.

template <typename Action>
void IIEditingViewController::post(Action action) {
    QMetaObject::invokeMethod(this, std::move(action), Qt::QueuedConnection);
}

void IIEditingViewController::whenIdle(std::function<void()> start) {
    if (running)
        nextRuns.push_back(std::move(start));
    else
        start();
}

void IIEditingViewController::startRun(const QString &description, Task task, TaskEnd didEnd) {
    const uint64_t run = ++lastRun;
    running = run;
    reserveTimer.stop();
    waiting = new MMWaitingWindowController;
    waiting->setWaitingDesc(description);
    waiting->startAnimation(window());
    emit userInterfaceStateChanged();
    worker->start([this, run, task = std::move(task), didEnd = std::move(didEnd)] {
        Failure failure;
        try {
            failure = task();
        } catch (const std::bad_alloc &) {
            failure = memoryError();
        } catch (const std::exception &problem) {
            failure = namedError("IDS_RUN_FAILED", problem.what());
        }
        post([this, run, failure, didEnd] { endRun(run, failure, didEnd); });
    });
}

void IIEditingViewController::endRun(uint64_t run, const Failure &failure, const TaskEnd &didEnd) {
    if (running != run)
        return;
    closeWaitingWindow();
    running.reset();
    reserveTimer.start();
    if (failure)
        tell(*failure);
    if (didEnd)
        didEnd(failure);
    emit runEnded();
    startNextRun();
}

void IIEditingViewController::startNextRun() {
    if (running)
        return;
    if (!nextRuns.empty()) {
        const auto start = std::move(nextRuns.front());
        nextRuns.pop_front();
        start();
    } else if (nextMerge) {
        startMerge(*std::exchange(nextMerge, std::nullopt));
    } else if (nextEffect) {
        startEffect(*std::exchange(nextEffect, std::nullopt));
    }
}

void IIEditingViewController::closeWaitingWindow() {
    if (!waiting)
        return;
    waiting->setCancelAction({}, nullptr);
    waiting->endAnimation();
    waiting->close();
    waiting->deleteLater();
    waiting = nullptr;
}

// Opening and merging.

bool IIEditingViewController::isSupportImage(const QString &path) {
    return tristop::isSupportImage(path.toStdString());
}

bool IIEditingViewController::isImageItemExist(const QString &) {
    return false;
}

void IIEditingViewController::openTile() {
    offeredURLs.reset();
    if (needSave())
        showUnsaveWarning([this](int returnCode) { unsaveWarningSheetDidEnd(returnCode); });
    else
        runOpenPanel();
}

void IIEditingViewController::runOpenPanel() {
    opener->open(window(), [this](const QList<QUrl> &urls, const std::optional<HdrError> &error) {
        if (error)
            showFailedWarning(error->localizedDescription);
        else
            openURLs(urls);
    });
}

void IIEditingViewController::offerURLs(const QList<QUrl> &urls) {
    if (running || QApplication::activeModalWidget() != nullptr) {
        qCInfo(lcTristop) << "photographs that came during a run or a dialog were left alone";
        return;
    }
    if (urls.size() != 3) {
        showFailedWarning(localizedText("IDS_TOO_MANY_ERROR"));
        return;
    }
    for (const QUrl &url : urls)
        if (!CBHDROpenController::allowsFile(url)) {
            showFailedWarning(localizedText("IDS_NOT_A_PHOTOGRAPH").arg(url.fileName()));
            return;
        }
    offeredURLs = urls;
    if (needSave())
        showUnsaveWarning([this](int returnCode) { unsaveWarningSheetDidEnd(returnCode); });
    else
        openURLs(*std::exchange(offeredURLs, std::nullopt));
}

void IIEditingViewController::openURLs(const QList<QUrl> &urls) {
    if (urls.size() != 3) {
        tell(namedError("IDS_TOO_MANY_ERROR", QStringLiteral("%1 photographs were chosen").arg(urls.size())));
        return;
    }
    QStringList paths;
    for (const QUrl &url : urls)
        paths.append(url.toLocalFile());
    const int thumbnailSide =
        static_cast<int>(std::ceil(IIImageViewController::kLargestSide * devicePixelRatioF()));
    whenIdle([this, paths, thumbnailSide] {
        startRun(localizedText("IDS_MERGING"), [this, bridge = engineController(), paths, thumbnailSide] {
            return readAndMerge(*bridge, paths, thumbnailSide);
        });
    });
}

/// On the background thread.
IIEditingViewController::Failure IIEditingViewController::readAndMerge(IHDREngineController &bridge,
                                                                       const QStringList &paths,
                                                                       int thumbnailSide) {
    std::array<std::string, 3> files;
    for (qsizetype i = 0; i < 3; ++i)
        files[static_cast<size_t>(i)] = paths[i].toStdString();
    {
        Photographs photographs;
        if (const auto problem = openPhotographs(files, photographs))
            return checkError(*problem);
        QList<QImage> thumbnails;
        for (const CBImageSource &photograph : photographs)
            thumbnails.append(platformImage(reducedUpright(photograph, thumbnailSide)));
        post([this, thumbnails, paths] { showThumbnails(thumbnails, paths); });
        if (!bridge.convertImages(photographs))
            return memoryError();
    }
    PixelReserve::giveBack(); // three whole photographs: more than the merge can use again
    return merge(
        bridge,
        {bridge.toneLength(), bridge.brightness(), bridge.toneSaturation(), bridge.ghostSuppressionLevel()},
        {files.begin(), files.end()});
}

void IIEditingViewController::process(int64_t toneLength, int64_t birghtness, int64_t toneSaturation,
                                      int32_t ghostSuppressionLevel) {
    const MergeSettings settings{toneLength, birghtness, toneSaturation, ghostSuppressionLevel};
    if (running)
        nextMerge = settings;
    else
        startMerge(settings);
}

void IIEditingViewController::engineSettingsChanged(int64_t toneLength, int64_t toneSaturation,
                                                    int64_t brightenss, int32_t ghost) {
    process(toneLength, brightenss, toneSaturation, ghost);
}

void IIEditingViewController::startMerge(const MergeSettings &settings) {
    qCDebug(lcTristop) << "merging with tone length" << settings.toneLength << "brightness"
                       << settings.brightness << "tone saturation" << settings.toneSaturation << "ghost level"
                       << settings.ghostLevel;
    startRun(localizedText("IDS_LOADING"),
             [this, bridge = engineController(), settings, photographs = document.photographs] {
                 return merge(*bridge, settings, photographs);
             });
}

/// On the background thread.
IIEditingViewController::Failure IIEditingViewController::merge(IHDREngineController &bridge,
                                                                const MergeSettings &settings,
                                                                const std::vector<std::string> &photographs) {
    Failure failure;
    bridge.run(settings.toneLength, settings.brightness, settings.toneSaturation, settings.ghostLevel,
               [&](const uint8_t *bgr, int32_t width, int32_t height, int64_t) {
                   const Rendering rendering(bgr, width, height);
                   if (rendering.image.isNull())
                       failure = memoryError();
                   else
                       post([this, rendering] { showRendering(rendering); });
               });
    if (bridge.status() != HDR_OK)
        return mergeError(bridge.status());
    if (failure)
        return failure;
    const HdrRunInfo &info = bridge.meEngine()->runInfo();
    if (info.fallback != HDR_FALLBACK_NONE)
        return namedError(
            "IDS_MERGE_FALLBACK",
            QStringLiteral("one exposure stands in for the merge: reason %1").arg(info.fallback));
    for (size_t i = 0; i < std::min(photographs.size(), std::size(info.excluded)); ++i)
        if (info.excluded[i] != 0)
            return fileError(photographs[i], "IDS_MERGE_LEFT_OUT", "was left out of the merge");
    return std::nullopt;
}

void IIEditingViewController::effectSettingsChanged(int64_t contrast, int64_t saturation, int64_t style) {
    const EffectSettings settings{contrast, saturation, style};
    if (running)
        nextEffect = settings;
    else
        startEffect(settings);
}

void IIEditingViewController::startEffect(const EffectSettings &settings) {
    qCDebug(lcTristop) << "effect with contrast" << settings.contrast << "saturation" << settings.saturation
                       << "style" << settings.style;
    startRun(localizedText("IDS_LOADING"),
             [this, bridge = engineController(), settings] { return renderEffect(*bridge, settings); });
}

/// On the background thread.
IIEditingViewController::Failure IIEditingViewController::renderEffect(IHDREngineController &bridge,
                                                                       const EffectSettings &settings) {
    constexpr LomoLensRGB kNoLens{255, 255, 255};
    constexpr int32_t kLensOpacity = 50;
    Failure failure;
    bridge.run(static_cast<int32_t>(settings.style), kNoLens, kLensOpacity,
               static_cast<int32_t>(settings.contrast), static_cast<int32_t>(settings.saturation),
               [&](PixelBuffer bgr, int32_t width, int32_t height, int64_t) {
                   const Rendering rendering(bgr.get(), width, height);
                   if (!rendering.image.isNull())
                       post([this, rendering] { showRendering(rendering); });
                   else if (width == 0)
                       failure = namedError("IDS_MERGE_AGAIN", "there is no merge to render an effect of");
                   else
                       failure = memoryError();
               });
    return failure;
}

void IIEditingViewController::showThumbnails(const QList<QImage> &thumbnails, const QStringList &paths) {
    adjust->leftImageView()->setImage(thumbnails[0]);
    adjust->middleImageView()->setImage(thumbnails[1]);
    adjust->rightImageView()->setImage(thumbnails[2]);
    isNewDocument = true;
    document.photographsRead({paths[0].toStdString(), paths[1].toStdString(), paths[2].toStdString()});
}

void IIEditingViewController::showRendering(const Rendering &rendering) {
    const QImage &image = rendering.image;
    adjust->updateHistogramData(rendering.histogram);
    adjust->updateSize(image.width(), image.height());
    picture->setImage(image, 0);
    document.pictureShown();
    if (isNewDocument) {
        isNewDocument = false;
        nextEffect.reset();
        document.forgetFormerPhotographs();
        zoomFit();
        adjust->enableControl(true);
        adjust->updateDefaultEffectsUI();
    }
    updateControls();
    qCDebug(lcTristop) << "picture of" << image.width() << "x" << image.height() << "shown";
}

// Zoom.

void IIEditingViewController::zoomFit() {
    zoomState.mode = ZoomMode::Fit;
    updateZoom();
}

void IIEditingViewController::zoomActual() {
    zoomState.mode = ZoomMode::Actual;
    updateZoom();
}

void IIEditingViewController::zoomIn() {
    zoomState.zoomIn();
    updateZoom();
}

void IIEditingViewController::zoomOut() {
    zoomState.zoomOut();
    updateZoom();
}

void IIEditingViewController::zoom(int segment) {
    constexpr std::array kCommands = {&IIEditingViewController::zoomOut, &IIEditingViewController::zoomIn,
                                      &IIEditingViewController::zoomFit,
                                      &IIEditingViewController::zoomActual};
    if (segment >= 0 && static_cast<size_t>(segment) < kCommands.size())
        (this->*kCommands[static_cast<size_t>(segment)])();
}

void IIEditingViewController::zoomImage(double factor) {
    if (!hasImage())
        return;
    zoomState.zoomTo(factor);
    updateZoom();
}

void IIEditingViewController::updateZoom() {
    if (zoomState.mode == ZoomMode::Fit) {
        const QSizeF size = picture->originalSize();
        const QSizeF clip = ui->imageClip->size();
        if (size.isEmpty() || clip.isEmpty())
            return;
        zoomState.factor = fitZoom(size.width(), size.height(), clip.width(), clip.height());
    } else if (zoomState.mode == ZoomMode::Actual) {
        zoomState.factor = 1.0;
    }
    picture->setZoom(zoomState.factor);
    if (zoomState.mode != ZoomMode::Free)
        ui->imageClip->centerImage();
    ui->zoomField->setText(localizedText("IDS_ZOOM_PERCENT").arg(std::lround(zoomState.factor * 100)));
    qCDebug(lcTristop) << "zoom mode" << zoomMode() << "factor" << zoomState.factor;
}

void IIEditingViewController::imageClipDoubleClick(IIImageClip *) {
    if (zoomState.mode == ZoomMode::Fit)
        zoomActual();
    else
        zoomFit();
}

void IIEditingViewController::imageClipMagnify(IIImageClip *, double value) {
    zoomImage((value + 1) * zoomState.factor);
}

void IIEditingViewController::imageClipScrollWheel(IIImageClip *, double delta) {
    zoomImage(delta * 0.1 + zoomState.factor);
}

} // namespace tristop
