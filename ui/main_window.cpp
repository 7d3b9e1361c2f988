// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/main_window.h"

#include <algorithm>
#include <chrono>

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QScreen>
#include <QSettings>
#include <QTimer>
#include <QVBoxLayout>

#include "ui/application_icon.h"
#include "ui/editing_view_controller.h"
#include "ui/guide_window_controller.h"
#include "ui/localized_text.h"
#include "ui/product_pages.h"
#include "ui/theme.h"
#include "ui/waiting_window_controller.h"
#include "ui/window_background_view.h"
#include "ui/window_titlebar.h"

namespace tristop {

namespace {

constexpr std::chrono::milliseconds kGuideDelay{500};
constexpr QSize kSmallestSize{960, 640};
constexpr QSize kFirstSize{1280, 800};
constexpr double kShareOfScreen = 0.95;
const QString kGeometryKey = QStringLiteral("windowGeometry");

QString applicationName() {
    return QGuiApplication::applicationDisplayName();
}

bool holdsFiles(const QMimeData *data) {
    const QList<QUrl> urls = data->urls();
    return !urls.isEmpty() &&
           std::all_of(urls.begin(), urls.end(), [](const QUrl &url) { return url.isLocalFile(); });
}

} // namespace

IIMainWindow::IIMainWindow(bool guide) : isGuideDue(guide) {
    setWindowIcon(applicationIcon());
    setMinimumSize(kSmallestSize);
    resize(kFirstSize.boundedTo(screen()->availableSize() * kShareOfScreen).expandedTo(kSmallestSize));
    restoreGeometry(QSettings().value(kGeometryKey).toByteArray());
    setAcceptDrops(true);

    titlebar = new SLWindowTitlebar(this);
    titlebar->setProperty(MMWaitingWindowController::kUsableWhileWaiting, true);
    title = new QLabel(titlebar);
    title->setAttribute(Qt::WA_TransparentForMouseEvents);
    title->setAlignment(Qt::AlignCenter);
    QFont bold = title->font();
    bold.setWeight(QFont::DemiBold);
    title->setFont(bold);
    menuBar = new QMenuBar(titlebar);
    menuBar->setNativeMenuBar(false); // it has its place in the strip
    place = new IIWindowBackgroundView(this);
    auto *views = new QVBoxLayout(this);
    views->setContentsMargins(0, 0, 0, 0);
    views->setSpacing(0);
    views->addWidget(titlebar);
    views->addWidget(place, 1);

    editing = new IIEditingViewController(place);
    makeMenus();
    awakeFromNib();
    connect(editing, &IIEditingViewController::userInterfaceStateChanged, this, &IIMainWindow::updateMenus);
    connect(editing, &IIEditingViewController::runEnded, this, &IIMainWindow::updateMenus);
    connect(editing, &IIEditingViewController::terminateAnswered, this, &IIMainWindow::quitAnswered);
    updateMenus();
}

IIMainWindow::~IIMainWindow() {
    QSettings().setValue(kGeometryKey, saveGeometry());
}

void IIMainWindow::awakeFromNib() {
    auto *fill = new QVBoxLayout(place);
    fill->setContentsMargins(0, 0, 0, 0);
    fill->addWidget(editing);
    setTitle(applicationName());
    localizeMenus();
}

void IIMainWindow::makeMenus() {
    fileMenu = menuBar->addMenu(QString());
    viewMenu = menuBar->addMenu(QString());
    windowMenu = menuBar->addMenu(QString());
    helpMenu = menuBar->addMenu(QString());
    setWindowsMenu(windowMenu);

    const auto add = [this](QMenu *menu, QAction *&item, const char *name, const QList<QKeySequence> &keys,
                            auto &&action) {
        item = menu->addAction(QString());
        item->setObjectName(QLatin1String(name));
        item->setShortcuts(keys);
        connect(item, &QAction::triggered, this, action);
    };
    const auto command = [this](void (IIEditingViewController::*operation)()) {
        return [this, operation] { (editing->*operation)(); };
    };
    using Editing = IIEditingViewController;
    add(fileMenu, importTilesMeunItem, "importTilesMeunItem", {QKeySequence::Open},
        command(&Editing::openTile));
    add(fileMenu, saveMeunItem, "saveMeunItem", {Qt::CTRL | Qt::Key_S, Qt::CTRL | Qt::SHIFT | Qt::Key_S},
        [this] { editing->saveAs(); });
    fileMenu->addSeparator();
    add(fileMenu, pageSetupMeunItem, "pageSetupMeunItem", {Qt::CTRL | Qt::SHIFT | Qt::Key_P},
        command(&Editing::printSetup));
    add(fileMenu, printMeunItem, "printMeunItem", {QKeySequence::Print}, command(&Editing::print));
    fileMenu->addSeparator();
    add(fileMenu, quitMeunItem, "quitMeunItem", {Qt::CTRL | Qt::Key_Q}, [this] { emit quitRequested(); });

    add(viewMenu, zoomInMeunItem, "zoomInMeunItem", {Qt::CTRL | Qt::Key_Plus, Qt::CTRL | Qt::Key_Equal},
        command(&Editing::zoomIn));
    add(viewMenu, zoomOutMeunItem, "zoomOutMeunItem", {Qt::CTRL | Qt::Key_Minus}, command(&Editing::zoomOut));
    viewMenu->addSeparator();
    add(viewMenu, fitinMeunItem, "fitinMeunItem", {Qt::CTRL | Qt::Key_9}, command(&Editing::zoomFit));
    add(viewMenu, actualSizeMenuItem, "actualSizeMenuItem", {Qt::CTRL | Qt::Key_0},
        command(&Editing::zoomActual));

    add(windowMenu, hideMeunItem, "hideMeunItem", {Qt::CTRL | Qt::Key_H}, [this] { showMinimized(); });
    add(windowMenu, hideOthersMenuItem, "hideOthersMenuItem", {}, [] {});
    add(windowMenu, showAllMenuItem, "showAllMenuItem", {}, [] {});
    // A program has no power over the windows of others here.
    hideOthersMenuItem->setVisible(false);
    showAllMenuItem->setVisible(false);
    windowMenu->addSeparator();

    add(helpMenu, onlineHelpMeunItem, "onlineHelpMeunItem", {QKeySequence::HelpContents},
        [this] { menuHelp(); });
    add(helpMenu, faqMeunItem, "faqMeunItem", {}, [this] { menuFAQ(); });
    add(helpMenu, ccsMeunItem, "ccsMeunItem", {}, [this] { menuCCS(); });
    helpMenu->addSeparator();
    add(helpMenu, showGuideMenuItem, "showGuideMenuItem", {},
        [](bool checked) { GuideWindowController::setShowGuide(checked); });
    showGuideMenuItem->setCheckable(true);
    connect(helpMenu, &QMenu::aboutToShow, this,
            [this] { showGuideMenuItem->setChecked(GuideWindowController::showGuide()); });
    helpMenu->addSeparator();
    add(helpMenu, aboutMeunItem, "aboutMeunItem", {}, [this] { about(); });
}

void IIMainWindow::localizeMenus() {
    fileMenu->setTitle(localizedText("IDS_MENUBAR_FILE"));
    viewMenu->setTitle(localizedText("IDS_MENUBAR_VIEW"));
    windowMenu->setTitle(localizedText("IDS_MENUBAR_WINDOW"));
    helpMenu->setTitle(localizedText("IDS_MENUBAR_HELP"));

    for (const auto &[item, key] : {std::pair{aboutMeunItem, "IDS_MENU_ABOUT"},
                                    {hideMeunItem, "IDS_MENU_HIDE"},
                                    {quitMeunItem, "IDS_MENU_QUIT"}}) {
        const QString format = localizedText(key);
        item->setText(format.isEmpty() ? format : format.arg(applicationName()));
    }
    for (const auto &[item, key] : {std::pair{hideOthersMenuItem, "IDS_MENU_HIDEOTHERS"},
                                    {showAllMenuItem, "IDS_MENU_SHOWALL"},
                                    {importTilesMeunItem, "IDS_MENU_TILES"},
                                    {saveMeunItem, "IDS_MENU_SAVE"},
                                    {pageSetupMeunItem, "IDS_MENU_PAGESETUP"},
                                    {printMeunItem, "IDS_MENU_PRINT"},
                                    {actualSizeMenuItem, "IDS_MENU_ACTUALSIZE"},
                                    {fitinMeunItem, "IDS_MENU_FITIN"},
                                    {zoomInMeunItem, "IDS_MENU_ZOOMIN"},
                                    {zoomOutMeunItem, "IDS_MENU_ZOOMOUT"},
                                    {onlineHelpMeunItem, "IDS_MENU_HELP"},
                                    {faqMeunItem, "IDS_MENU_FAQ"},
                                    {ccsMeunItem, "IDS_MENU_CCS"},
                                    {showGuideMenuItem, "IDS_MENU_SHOWGUIDE"}})
        item->setText(localizedText(key));
}

void IIMainWindow::updateMenus() {
    const bool isIdle = !editing->isRunning();
    for (const auto &[item, command] : {std::pair{importTilesMeunItem, "openTile:"},
                                        {saveMeunItem, "saveAs:"},
                                        {pageSetupMeunItem, "printSetup:"},
                                        {printMeunItem, "print:"},
                                        {actualSizeMenuItem, "zoomActual:"},
                                        {fitinMeunItem, "zoomFit:"},
                                        {zoomInMeunItem, "zoomIn:"},
                                        {zoomOutMeunItem, "zoomOut:"}})
        item->setEnabled(isIdle && editing->validateUserInterfaceItem(command));
}

int64_t IIMainWindow::terminate() {
    return editing->terminate();
}

QImage IIMainWindow::displayImage() const {
    return editing->displayImage();
}

void IIMainWindow::setTitle(const QString &text) {
    setWindowTitle(text);
    title->setText(text);
    layOutTitlebar();
}

void IIMainWindow::menuHelp() {
    openPage(kGuidePage);
}

void IIMainWindow::menuFAQ() {
    openPage(kFaqPage);
}

void IIMainWindow::menuCCS() {
    openPage(kSupportPage);
}

void IIMainWindow::openPage(const char *address) {
    if (!QDesktopServices::openUrl(QUrl(QLatin1String(address))))
        editing->tell(localizedText("IDS_PAGE_NOT_OPENED").arg(QLatin1String(address)));
}

void IIMainWindow::about() {
    const QString text = localizedText("IDS_ABOUT_TEXT").arg(QCoreApplication::applicationVersion());
    auto *box = new QMessageBox(QMessageBox::NoIcon, applicationName(),
                                QStringLiteral("<h2>%1</h2><p>%2</p>").arg(applicationName(), text),
                                QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIconPixmap(applicationIcon().pixmap(QSize(64, 64), devicePixelRatioF()));
    box->button(QMessageBox::Ok)->setText(localizedText("IDS_OK"));
    box->open();
}

void IIMainWindow::layOutTitlebar() {
    const int height = titlebar->height() - 1;
    const QSize menus = menuBar->sizeHint();
    const int menusLeft = titlebar->buttonsEnd() + theme::kGrid;
    menuBar->setGeometry(menusLeft, (height - menus.height()) / 2, menus.width(), menus.height());
    const int width = title->sizeHint().width() + 2 * theme::kGrid;
    const int left = std::max((titlebar->width() - width) / 2, menuBar->geometry().right() + theme::kGrid);
    title->setGeometry(left, 0, std::max(0, std::min(width, titlebar->width() - left)), height);
}

void IIMainWindow::runGuide() {
    if (editing->isRunning()) { // photographs of the command line come first
        connect(editing, &IIEditingViewController::runEnded, this, &IIMainWindow::runGuide,
                Qt::SingleShotConnection);
        return;
    }
    if (const auto *sheet = qobject_cast<QDialog *>(QApplication::activeModalWidget())) { // one at a time
        connect(sheet, &QDialog::finished, this, &IIMainWindow::runGuide,
                static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
        return;
    }
    guide = new GuideWindowController(this);
    guide->open();
}

void IIMainWindow::showEvent(QShowEvent *event) {
    SLBaseWindow::showEvent(event);
    if (isGuideDue && GuideWindowController::showGuide())
        QTimer::singleShot(kGuideDelay, this, &IIMainWindow::runGuide);
    isGuideDue = false;
}

void IIMainWindow::changeEvent(QEvent *event) {
    if (event->type() == QEvent::ActivationChange) {
        QPalette colors = title->palette();
        colors.setColor(QPalette::WindowText, isActiveWindow() ? theme::kText : theme::kSecondaryText);
        title->setPalette(colors);
        titlebar->update();
    }
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        layOutTitlebar();
    SLBaseWindow::changeEvent(event);
}

void IIMainWindow::resizeEvent(QResizeEvent *event) {
    SLBaseWindow::resizeEvent(event);
    layOutTitlebar();
}

void IIMainWindow::closeEvent(QCloseEvent *event) {
    event->ignore();
    emit closeRequested();
}

void IIMainWindow::dragEnterEvent(QDragEnterEvent *event) {
    if (!editing->isRunning() && holdsFiles(event->mimeData()))
        event->acceptProposedAction();
}

void IIMainWindow::dropEvent(QDropEvent *event) {
    if (!holdsFiles(event->mimeData()))
        return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
    // Outside of the drag, whose source waits for it to end.
    const QList<QUrl> urls = event->mimeData()->urls();
    QMetaObject::invokeMethod(
        this, [this, urls] { editing->offerURLs(urls); }, Qt::QueuedConnection);
}

} // namespace tristop
