// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/photographs.h"

#include <cmath>
#include <future>

namespace tristop {
namespace {

constexpr double kSmallestSide = 100;

std::string inPixels(ImageSize size) {
    return std::to_string(std::lround(size.width)) + " x " + std::to_string(std::lround(size.height)) +
           " pixels";
}

std::optional<FileError> loadAndCheckSizes(const std::array<std::string, 3> &paths,
                                           Photographs &photographs) {
    ImageSize firstSize;
    for (size_t i = 0; i < paths.size(); ++i) {
        CBImageSource &photograph = photographs[i];
        if (!photograph.initWithPhoto(paths[i]))
            return FileError{paths[i], photograph.failure()};
        const ImageSize size = photograph.imageSize(photograph.orientation());
        if (size.width < kSmallestSide || size.height < kSmallestSide)
            return FileError{paths[i], "is too small: " + inPixels(size) + ", at least 100 x 100 are needed"};
        if (i == 0)
            firstSize = size;
        else if (size != firstSize)
            return FileError{paths[i], "has another size than " + paths[0] + ": " + inPixels(size) +
                                           " instead of " + inPixels(firstSize)};
    }
    return std::nullopt;
}

} // namespace

std::optional<FileError> openPhotographs(const std::array<std::string, 3> &paths, Photographs &photographs) {
    if (auto problem = loadAndCheckSizes(paths, photographs))
        return problem;
    std::array<std::future<bool>, 3> opened;
    for (size_t i = 0; i < paths.size(); ++i)
        opened[i] = std::async([&photograph = photographs[i]] { return photograph.open(); });
    std::optional<FileError> problem;
    for (size_t i = 0; i < paths.size(); ++i)
        if (!opened[i].get() && !problem)
            problem = FileError{paths[i], photographs[i].failure()};
    return problem;
}

} // namespace tristop
