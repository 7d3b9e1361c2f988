// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/photographs.h"

#include <cmath>
#include <condition_variable>
#include <future>
#include <mutex>

namespace tristop {
namespace {

constexpr double kSmallestSide = 100;

std::string inPixels(ImageSize size) {
    return std::to_string(std::lround(size.width)) + " x " + std::to_string(std::lround(size.height)) +
           " pixels";
}

/// What is wrong with the size of photograph `i`, compared with the first one.
std::optional<PhotographError> sizeProblem(const std::array<std::string, 3> &paths,
                                           const Photographs &photographs, size_t i) {
    const auto uprightSize = [](const CBImageSource &photograph) {
        return photograph.imageSize(photograph.orientation());
    };
    const ImageSize size = uprightSize(photographs[i]), first = uprightSize(photographs[0]);
    if (size.width < kSmallestSide || size.height < kSmallestSide)
        return PhotographError{
            {paths[i], "is too small: " + inPixels(size) + ", at least 100 x 100 are needed"},
            PhotographError::Kind::TooSmall};
    if (size != first)
        return PhotographError{{paths[i], "has another size than " + paths[0] + ": " + inPixels(size) +
                                              " instead of " + inPixels(first)},
                               PhotographError::Kind::OtherSize};
    return std::nullopt;
}

/// Lets work begin while all that runs stays within a budget; a single piece of work may always run.
class MemoryBudget {
public:
    explicit MemoryBudget(size_t bytes) : bytes(bytes) {}

    /// Waits until the work may run, and returns its result.
    template <typename Work>
    auto run(size_t needed, Work work) {
        const Share share(*this, needed);
        return work();
    }

private:
    struct Share {
        Share(MemoryBudget &budget, size_t needed) : budget(budget), needed(needed) {
            std::unique_lock lock(budget.mutex);
            budget.returned.wait(lock, [&] {
                return budget.taken == 0 ||
                       (budget.taken <= budget.bytes && needed <= budget.bytes - budget.taken);
            });
            budget.taken += needed;
        }
        ~Share() {
            {
                const std::lock_guard lock(budget.mutex);
                budget.taken -= needed;
            }
            budget.returned.notify_all();
        }
        Share(const Share &) = delete;
        Share &operator=(const Share &) = delete;

        MemoryBudget &budget;
        size_t needed;
    };

    size_t bytes;
    size_t taken = 0;
    std::mutex mutex;
    std::condition_variable returned;
};

} // namespace

std::optional<PhotographError> openPhotographs(const std::array<std::string, 3> &paths,
                                               Photographs &photographs, size_t decodingMemory) {
    for (size_t i = 0; i < paths.size(); ++i) {
        if (!photographs[i].initWithPhoto(paths[i]))
            return PhotographError{{paths[i], photographs[i].failure()}, PhotographError::Kind::Unreadable};
        if (auto problem = sizeProblem(paths, photographs, i))
            return problem;
    }
    MemoryBudget budget(decodingMemory);
    std::array<std::future<bool>, 3> opened;
    for (size_t i = 0; i < paths.size(); ++i)
        opened[i] = std::async([&budget, &photograph = photographs[i]] {
            return budget.run(photograph.decodingBytes(), [&photograph] { return photograph.open(); });
        });
    for (const auto &result : opened)
        result.wait();
    for (size_t i = 0; i < paths.size(); ++i)
        if (!opened[i].get())
            return PhotographError{{paths[i], photographs[i].failure()}, PhotographError::Kind::Unreadable};
    for (size_t i = 0; i < paths.size(); ++i)
        if (auto problem = sizeProblem(paths, photographs, i))
            return problem;
    return std::nullopt;
}

} // namespace tristop
