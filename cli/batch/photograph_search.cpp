// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/batch/photograph_search.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <future>
#include <set>
#include <system_error>
#include <thread>
#include <utility>

#include <sys/stat.h>

namespace tristop {
namespace {

namespace fs = std::filesystem;

/// When a file was last changed, by the local clock, as cameras tell times.
CameraTime modificationTime(const std::string &path) {
    struct stat file {};
    struct tm local {};
    if (::stat(path.c_str(), &file) != 0 || ::localtime_r(&file.st_mtim.tv_sec, &local) == nullptr)
        return {};
    return CameraTime(std::chrono::seconds(file.st_mtim.tv_sec + local.tm_gmtoff) +
                      std::chrono::microseconds(file.st_mtim.tv_nsec / 1000));
}

/// The type of a photograph that a batch merges. TIFF files are results more often than photographs.
std::optional<PhotographType> mergeableType(const fs::path &path) {
    const auto type = typeBySuffix(path.string());
    return type == PhotographType::Tiff ? std::nullopt : type;
}

class Walk {
public:
    Walk(const std::string &resultFolder, PhotographSearch &found)
        : resultFolder(resultFolder), found(found) {}

    void addFile(const fs::path &path, const std::string &folder) {
        const auto format = mergeableType(path);
        std::error_code error;
        if (format && seen.insert(fs::weakly_canonical(path, error)).second)
            found.photographs.push_back({path.string(), folder, *format, {}, {}, ""});
    }

    /// `below` is where the folder lies below the one that is searched.
    void addFolder(const fs::path &path, const fs::path &below) {
        std::error_code error;
        std::vector<fs::path> entries;
        for (auto entry = fs::directory_iterator(path, error); !error && entry != fs::directory_iterator();
             entry.increment(error))
            if (!entry->path().filename().string().starts_with('.'))
                entries.push_back(entry->path());
        if (error)
            found.unreadable.push_back({path.string(), "cannot be read: " + error.message()});
        std::ranges::sort(entries, [](const fs::path &a, const fs::path &b) {
            return naturallyBefore(a.string(), b.string());
        });
        for (const fs::path &entry : entries)
            if (fs::is_regular_file(entry, error))
                addFile(entry, below.string());
        for (const fs::path &entry : entries)
            if (fs::is_directory(fs::symlink_status(entry, error)) &&
                !fs::equivalent(entry, resultFolder, error))
                addFolder(entry, below / entry.filename());
    }

private:
    const fs::path resultFolder;
    PhotographSearch &found;
    std::set<fs::path> seen;
};

/// Reads the headers of all photographs. Mostly waits for the disk or the network.
void readHeaders(std::vector<Photograph> &photographs) {
    std::atomic<size_t> next = 0;
    const auto work = [&] {
        for (size_t i = next++; i < photographs.size(); i = next++) {
            Photograph &photograph = photographs[i];
            photograph.modified = modificationTime(photograph.path);
            photograph.failure = readCapture(photograph.path, photograph.capture).value_or("");
        }
    };
    constexpr size_t kReaders = 8;
    std::vector<std::future<void>> readers(std::min(kReaders, photographs.size()));
    for (auto &reader : readers)
        reader = std::async(std::launch::async, work);
    for (auto &reader : readers)
        reader.get();
}

} // namespace

bool naturallyBefore(const std::string &a, const std::string &b) {
    return ::strverscmp(a.c_str(), b.c_str()) < 0;
}

std::optional<FileError> findPhotographs(const std::vector<std::string> &inputs,
                                         const std::string &resultFolder, PhotographSearch &found) {
    Walk walk(resultFolder, found);
    for (const std::string &input : inputs) {
        std::error_code error;
        const auto status = fs::status(input, error);
        if (!fs::exists(status))
            return FileError{input, status.type() == fs::file_type::not_found
                                        ? "does not exist"
                                        : "cannot be read: " + error.message()};
        const fs::path path = fs::absolute(input).lexically_normal();
        if (fs::is_directory(status))
            walk.addFolder(path, "");
        else if (mergeableType(input))
            walk.addFile(path, "");
        else
            return FileError{input, "is no photograph"};
    }
    readHeaders(found.photographs);
    return std::nullopt;
}

} // namespace tristop
