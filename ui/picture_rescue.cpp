// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/picture_rescue.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <utility>

#include <QFile>
#include <QGuiApplication>
#include <QStandardPaths>

#include "app/file_writer.h"
#include "app/hdr_engine_bridge.h"
#include "app/picture_writer.h"
#include "ui/localized_text.h"

namespace tristop {
/// Guards what follows and the pictures to rescue: whichever thread finds the display gone ends the program.
static std::mutex rescuing;
static PictureRescue *armed = nullptr;

void rescueNow() {
    const std::scoped_lock lock(rescuing);
    if (armed != nullptr)
        armed->write();
}

namespace {

QtMessageHandler formerMessageHandler = nullptr;

/// When the compositor is gone, Qt says so and ends the program with _exit(), which nothing else tells of.
void rescueWithoutCompositor(QtMsgType type, const QMessageLogContext &context, const QString &message) {
    formerMessageHandler(type, context, message);
    if (type == QtWarningMsg && message.startsWith(QLatin1String("The Wayland connection ")))
        rescueNow();
}

QStringList standardPlaces() {
    QStringList places = QStandardPaths::standardLocations(QStandardPaths::PicturesLocation).mid(0, 1);
    if (!places.isEmpty() && !QFile::exists(places.front()))
        places.clear();
    return places << QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
}

QString standardNote() {
    return QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation) + "/rescued-picture";
}

std::string currentTime() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H.%M.%S", &local);
    return text.data();
}

/// A file in the folder "Tristop" of a place, which is made, that does not exist yet.
std::string freeFile(const std::string &place) {
    const auto folder = std::filesystem::path(place) / "Tristop";
    std::error_code ignored; // writing fails then, and says why
    std::filesystem::create_directories(folder, ignored);
    const std::string name = "Unsaved " + currentTime();
    std::filesystem::path file = folder / (name + ".png");
    for (int number = 2; std::filesystem::exists(file, ignored); ++number)
        file = folder / (name + " (" + std::to_string(number) + ").png");
    return file.string();
}

} // namespace

PictureRescue::PictureRescue() : PictureRescue(standardPlaces(), standardNote()) {}

PictureRescue::PictureRescue(const QStringList &placesToTry, const QString &noteFile)
    : note(noteFile.toStdString()), told(localizedText("IDS_RESCUED").toStdString()) {
    for (const QString &place : placesToTry)
        places.push_back(place.toStdString());
    [[maybe_unused]] static const bool isRegistered = std::atexit(rescueNow) == 0;
    {
        const std::scoped_lock lock(rescuing);
        armed = this;
    }
    if (QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
        formerMessageHandler = qInstallMessageHandler(rescueWithoutCompositor);
}

PictureRescue::~PictureRescue() {
    if (formerMessageHandler != nullptr)
        qInstallMessageHandler(formerMessageHandler);
    const std::scoped_lock lock(rescuing);
    armed = nullptr;
}

void PictureRescue::setUnsavedPicture(const QImage &picture) {
    const std::scoped_lock lock(rescuing);
    unsavedPicture = picture;
}

std::string PictureRescue::rescue() {
    const std::scoped_lock lock(rescuing);
    return write();
}

// Also called while the program is being torn down: nothing here needs the display or the application.
std::string PictureRescue::write() {
    const QImage image = std::exchange(unsavedPicture, {});
    if (image.isNull())
        return {};
    const int32_t width = image.width(), height = image.height();
    const PixelBuffer bgr = IHDREngineController::bgra2bgr(image.constBits(), width, height,
                                                           static_cast<int32_t>(image.bytesPerLine()));
    if (!bgr)
        return {};
    for (const std::string &place : places) {
        const std::string file = freeFile(place);
        if (const auto problem = writePicture(
                file, PictureFormat::Png, {bgr.get(), width, height, bgrLineBytes(width), PixelOrder::Bgr})) {
            std::fprintf(stderr, "tristop: %s %s\n", problem->path.c_str(), problem->reason.c_str());
            continue;
        }
        std::string text = told;
        if (const size_t argument = text.find("%1"); argument != std::string::npos)
            text.replace(argument, 2, file);
        std::fprintf(stderr, "tristop: %s\n", text.c_str());
        std::error_code ignored; // the picture is safe without a note, too
        std::filesystem::create_directories(std::filesystem::path(note).parent_path(), ignored);
        replaceFile(note, file);
        return file;
    }
    return {};
}

QString PictureRescue::takeRescued() const {
    std::ifstream reading(note);
    std::string path;
    std::getline(reading, path, '\0');
    std::error_code ignored; // a note that stays tells of the picture again
    std::filesystem::remove(note, ignored);
    return std::filesystem::exists(path, ignored) ? QString::fromStdString(path) : QString();
}

} // namespace tristop
