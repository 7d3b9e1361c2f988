// SPDX-License-Identifier: GPL-3.0-or-later
// How long a released slider takes to show in the window, beside the time of the engine alone, and how much
// memory the application holds after many merges in one window.
//   window_bench DARK MIDDLE BRIGHT [REPEATS [MERGES]]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <numeric>
#include <string>
#include <vector>

#include <QApplication>
#include <QDir>
#include <QMouseEvent>
#include <QStandardPaths>
#include <QUrl>

#include "ui/adjust_slider.h"
#include "ui/adjust_view_controller.h"
#include "ui/editing_view_controller.h"
#include "ui/image_view.h"
#include "ui/localized_text.h"
#include "ui/main_window.h"
#include "ui/theme.h"

using namespace tristop;

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

/// Notes when a view has painted a picture that is not the one before, at its full quality.
class PaintWatch : public QObject {
public:
    explicit PaintWatch(IIImageView &view) : view(view) { view.installEventFilter(this); }

    void expectNewPicture() {
        former = view.image().cacheKey();
        isPainted = false;
    }
    bool painted() const { return isPainted; }
    Clock::time_point time() const { return paintTime; }

private:
    bool eventFilter(QObject *watched, QEvent *event) override {
        if (event->type() != QEvent::Paint || isPainted || view.image().cacheKey() == former ||
            !view.isSettled())
            return false;
        watched->event(event);
        isPainted = true;
        paintTime = Clock::now();
        return true;
    }

    IIImageView &view;
    qint64 former = 0;
    bool isPainted = false;
    Clock::time_point paintTime;
};

/// The main window with a merged picture, and a user who drags its sliders.
class Session {
public:
    explicit Session(const QList<QUrl> &photographs) : watch(*editing().imageView()) {
        window.show();
        watch.expectNewPicture();
        editing().offerURLs(photographs);
        waitForPicture();
    }

    IIAdjustViewController &panel() { return *editing().adjustViewController(); }

    /// Drags a slider to a share of its range, and gives the milliseconds from its release to the new
    /// picture.
    double drag(AdjustSlider &slider, double share) {
        const double middle = slider.height() / 2.0;
        const auto mouse = [&](QEvent::Type type, double x, Qt::MouseButton button,
                               Qt::MouseButtons buttons) {
            const QPointF place(x, middle);
            QMouseEvent event(type, place, slider.mapToGlobal(place), button, buttons, Qt::NoModifier);
            QApplication::sendEvent(&slider, &event);
        };
        const double target = slider.width() * share;
        mouse(QEvent::MouseButtonPress, slider.width() / 2.0, Qt::LeftButton, Qt::LeftButton);
        mouse(QEvent::MouseMove, target, Qt::NoButton, Qt::LeftButton);
        QApplication::processEvents();
        watch.expectNewPicture();
        const auto start = Clock::now();
        mouse(QEvent::MouseButtonRelease, target, Qt::LeftButton, Qt::NoButton);
        waitForPicture();
        return std::chrono::duration<double, std::milli>(watch.time() - start).count();
    }

    /// Lets everything end that follows a picture.
    void rest() {
        const auto start = Clock::now();
        while (millisecondsSince(start) < 500)
            QApplication::processEvents(QEventLoop::AllEvents, 100);
    }

    /// The engine's own time of the latest merge.
    double mergeTime() {
        const int64_t *steps = editing().engineController()->meEngine()->runInfo().stepMicroseconds;
        return static_cast<double>(std::accumulate(steps, steps + HDR_STEP_COUNT, int64_t{0})) / 1000;
    }

    /// Time of the colour effect alone, with the settings of the latest run.
    double effectTime() {
        const IILomoEngine &effect = *editing().engineController()->lomoEngine();
        const IILomoData &kept = *effect.engineData();
        const size_t bytes = static_cast<size_t>(kept.imageHeight) * static_cast<size_t>(kept.imageLineBytes);
        std::vector<uint8_t> copy(kept.imageData.get(), kept.imageData.get() + bytes);
        const auto start = Clock::now();
        effect.runLomo(copy.data(), kept.imageWidth, kept.imageHeight, kept.imageLineBytes);
        return millisecondsSince(start);
    }

private:
    IIEditingViewController &editing() { return *window.editingViewController(); }

    void waitForPicture() {
        constexpr std::chrono::minutes kPatience{5};
        const auto start = Clock::now();
        while (!watch.painted() || editing().isRunning()) {
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
            if (Clock::now() - start > kPatience) {
                std::fprintf(stderr, "no new picture is shown\n");
                std::exit(1);
            }
        }
    }

    IIMainWindow window;
    PaintWatch watch;
};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void print(const char *what, const std::vector<double> &values) {
    std::printf("  %-44s %8.1f ms  (worst %.1f ms)\n", what, median(values),
                *std::max_element(values.begin(), values.end()));
}

/// Drags a slider to and fro and prints how long that takes to show beside the time of the engine.
template <typename EngineTime>
void measure(Session &session, AdjustSlider &slider, int repeats, const char *title, EngineTime engineTime) {
    std::vector<double> whole, engine, rest;
    for (int i = -1; i < repeats; ++i) { // the first warms up
        const double time = session.drag(slider, i % 2 == 0 ? 0.3 : 0.7);
        const double alone = engineTime();
        if (i < 0)
            continue;
        whole.push_back(time);
        engine.push_back(alone);
        rest.push_back(time - alone);
    }
    std::printf("%s, median of %d\n", title, repeats);
    print("from the release to the new picture painted", whole);
    print("the engine alone", engine);
    print("the difference", rest);
}

/// A line of /proc/self/status, in MiB.
double memory(const std::string &name) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
        if (double kibibytes = 0; word == name + ':' && status >> kibibytes)
            return kibibytes / 1024;
    return 0;
}

void measureMemory(Session &session, int merges) {
    AdjustSlider &slider = *session.panel().brightnessSlider();
    std::printf("Resident memory in one window\n");
    for (int merge = 1; merge <= merges; ++merge) {
        session.drag(slider, merge % 2 == 0 ? 0.3 : 0.7);
        for (const int told : {1, 10, 20, 50, 100, 150, merges})
            if (merge == told) {
                session.rest();
                std::printf("  after %4d merges %8.1f MiB\n", merge, memory("VmRSS"));
                std::fflush(stdout);
                break;
            }
    }
    std::printf("  at most %8.1f MiB\n", memory("VmHWM"));
}

} // namespace

int main(int argc, char **argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true); // away from the settings of the user
    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName("tristop-bench");
    QApplication::setQuitOnLastWindowClosed(false);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 4 || arguments.size() > 6) {
        std::fprintf(stderr, "usage: window_bench DARK MIDDLE BRIGHT [REPEATS [MERGES]]\n");
        return 2;
    }
    loadTranslations(application);
    applyTheme(application);
    QList<QUrl> photographs;
    for (const QString &path : arguments.mid(1, 3))
        photographs << QUrl::fromLocalFile(QDir::current().absoluteFilePath(path));
    const int repeats = std::max(1, arguments.value(4, "11").toInt());
    const int merges = arguments.value(5, "200").toInt();

    Session session(photographs);
    std::printf("Window on the platform %s\n", qPrintable(QGuiApplication::platformName()));
    measure(session, *session.panel().brightnessSlider(), repeats, "A merge slider",
            [&] { return session.mergeTime(); });
    measure(session, *session.panel().saturationSlider(), repeats, "An effect slider",
            [&] { return session.effectTime(); });
    if (merges > 0)
        measureMemory(session, merges);
    return 0;
}
