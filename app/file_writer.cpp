// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/file_writer.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tristop {
namespace {

/// Names of the temporary files there are, for signal handlers; null where there is none.
std::array<std::atomic<const char *>, 256> unfinishedFiles{};
static_assert(std::atomic<const char *>::is_always_lock_free);

void noteUnfinished(const char *path) {
    for (auto &slot : unfinishedFiles) {
        const char *none = nullptr;
        if (slot.compare_exchange_strong(none, path))
            return;
    }
}

void forgetUnfinished(const char *path) {
    for (auto &slot : unfinishedFiles) {
        const char *noted = path;
        if (slot.compare_exchange_strong(noted, nullptr))
            return;
    }
}

/**
 * A new file beside a target. It has no name until it is whole, so that nothing is left of it however the
 * program ends. Where there are no such files (on NFS and FAT), or no /proc to name them through, it has
 * one, and is removed again unless it has been renamed to the target.
 */
class TemporaryFile {
public:
    /// In the folder of `target`; on failure file() is null and errno says why.
    explicit TemporaryFile(const std::filesystem::path &target) : target(target) {
        int descriptor = -1;
        if (::access(kOpenFiles, X_OK) == 0)
            descriptor = ::open(target.parent_path().c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, 0666);
        if (descriptor < 0)
            descriptor = withFreeName(
                [](const char *name) { return ::open(name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666); });
        if (descriptor < 0)
            return;
        struct stat existing {};
        if (::stat(target.c_str(), &existing) == 0)
            ::fchmod(descriptor, existing.st_mode & 0777);
        stream = ::fdopen(descriptor, "wb");
        if (stream == nullptr)
            ::close(descriptor);
    }
    ~TemporaryFile() {
        if (stream != nullptr)
            std::fclose(stream);
        if (!path.empty()) {
            ::unlink(path.c_str());
            forgetUnfinished(path.c_str());
        }
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    std::FILE *file() const { return stream; }

    /// Brings the file to the disk and gives it the target's name; on failure errno says why.
    bool moveToTarget() {
        if (std::fflush(stream) != 0 || ::fsync(::fileno(stream)) != 0)
            return false;
        if (path.empty() && !giveName())
            return false;
        if (std::fclose(std::exchange(stream, nullptr)) != 0)
            return false;
        if (std::rename(path.c_str(), target.c_str()) != 0)
            return false;
        forgetUnfinished(path.c_str());
        path.clear();
        // The new name survives a power cut once the folder is on the disk, too.
        const int folder = ::open(target.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (folder >= 0) {
            ::fsync(folder);
            ::close(folder);
        }
        return true;
    }

private:
    static constexpr const char *kOpenFiles = "/proc/self/fd/";

    /// Calls create(name) with temporary names until one is free. Gives what it returned, below 0 on failure.
    template <typename Create>
    int withFreeName(Create create) {
        constexpr int kAttempts = 1000;
        int result = -1;
        for (int i = 0; i < kAttempts && result < 0; ++i) {
            path = target.parent_path() /
                   (".tristop-" + std::to_string(getpid()) + "-" + std::to_string(i) + ".tmp");
            result = create(path.c_str());
            if (result < 0 && errno != EEXIST)
                break;
        }
        if (result < 0)
            path.clear();
        else
            noteUnfinished(path.c_str());
        return result;
    }

    bool giveName() {
        const std::string nameless = kOpenFiles + std::to_string(::fileno(stream));
        return withFreeName([&](const char *name) {
                   return ::linkat(AT_FDCWD, nameless.c_str(), AT_FDCWD, name, AT_SYMLINK_FOLLOW);
               }) >= 0;
    }

    const std::filesystem::path target;
    std::filesystem::path path; ///< empty while the file has no name
    std::FILE *stream = nullptr;
};

/// The file that a write through `path` creates or replaces: symbolic links followed, also to a file that
/// does not exist yet. Its folder is named.
std::filesystem::path resolveTarget(const std::string &path) {
    std::error_code error;
    std::filesystem::path target = std::filesystem::absolute(path, error);
    while (std::filesystem::is_symlink(std::filesystem::symlink_status(target, error)))
        target = target.parent_path() / std::filesystem::read_symlink(target, error);
    return target;
}

} // namespace

FileError cannotWrite(const std::string &path, const std::string &why) {
    return {path, "cannot be written: " + why};
}

std::string errnoMessage(int error) {
    switch (error) {
    case ENOSPC:
        return "the disk is full";
    case EDQUOT:
        return "your share of the disk is used up";
    case EFBIG:
        return "the file would be larger than is allowed here";
    case EROFS:
        return "the disk is read-only";
    case EACCES:
    case EPERM:
        return "you have no permission to write there";
    case ENOENT:
        return "its folder is gone";
    default:
        return std::generic_category().message(error);
    }
}

std::optional<FileError> checkFileTarget(const std::string &path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!std::filesystem::status_known(status))
        return cannotWrite(path, error.message());
    if (std::filesystem::is_directory(status))
        return cannotWrite(path, "it is a folder");
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        return cannotWrite(path, "it is not an ordinary file");
    const std::filesystem::path target = resolveTarget(path);
    if (std::filesystem::exists(status) && ::access(target.c_str(), W_OK) != 0)
        return cannotWrite(path, errnoMessage(errno));
    const std::filesystem::path folder = target.parent_path();
    if (!std::filesystem::is_directory(folder, error))
        return cannotWrite(path, "there is no folder " + folder.string());
    if (::access(folder.c_str(), W_OK | X_OK) != 0)
        return cannotWrite(path, errnoMessage(errno));
    return std::nullopt;
}

std::optional<FileError> replaceFile(const std::string &path, const FileContent &content) {
    if (auto problem = checkFileTarget(path))
        return problem;
    const std::filesystem::path target = resolveTarget(path);
    TemporaryFile temporary(target);
    if (temporary.file() == nullptr)
        return cannotWrite(path, errnoMessage(errno));
    if (const auto problem = content(temporary.file()))
        return cannotWrite(path, *problem);
    if (!temporary.moveToTarget())
        return cannotWrite(path, errnoMessage(errno));
    return std::nullopt;
}

std::optional<FileError> replaceFile(const std::string &path, const std::string &text) {
    return replaceFile(path, [&text](std::FILE *file) -> std::optional<std::string> {
        if (std::fwrite(text.data(), 1, text.size(), file) == text.size())
            return std::nullopt;
        return errnoMessage(errno);
    });
}

void removeUnfinishedFiles() noexcept {
    for (const auto &slot : unfinishedFiles)
        if (const char *path = slot)
            ::unlink(path);
}

} // namespace tristop
