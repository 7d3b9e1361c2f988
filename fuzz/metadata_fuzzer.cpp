// SPDX-License-Identifier: GPL-3.0-or-later
// Any bytes for a photograph's metadata: what is told of the picture and of how it was taken stays within its
// ranges, and a merged picture can be written with what it takes over.
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

#include "app/camera_exif.h"
#include "app/capture.h"
#include "app/image_source.h"
#include "app/photo_metadata.h"
#include "app/picture_encoding.h"
#include "fuzz/require.h"

namespace {

using namespace tristop;
using fuzz::require;

/// A file in memory with a path.
class MemoryFile {
public:
    explicit MemoryFile(std::span<const uint8_t> content) : descriptor(memfd_create("photograph", 0)) {
        require(descriptor >= 0 &&
                    write(descriptor, content.data(), content.size()) == static_cast<ssize_t>(content.size()),
                "there is memory for the file");
    }
    ~MemoryFile() { close(descriptor); }
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor); }

private:
    int descriptor;
};

void readMetadata(std::span<const uint8_t> file) {
    CBImageSource source;
    source.setImageMetadata(imageMetadata(file, {.width = 40, .height = 30}));
    require(source.orientation() >= 1 && source.orientation() <= 8, "orientations are 1 to 8");
    require(source.imageSize(1) == ImageSize{40, 30}, "the size is the decoder's");
    require(source.dpiWidth() > 0 && source.dpiHeight() > 0, "resolutions are positive");
    require(std::isfinite(source.imageExposure()), "exposure biases are finite");
    require(std::isfinite(source.imageFocusLength()), "focal lengths are finite");
    source.imageISO();
}

void readHowItWasTaken(const std::string &path) {
    Capture capture;
    if (const auto problem = readCapture(path, capture)) {
        require(!problem->empty(), "a failure has its reason");
        return;
    }
    require(capture.exposureTime.count() >= 0, "exposure times are not negative");
    require(!capture.exposure || std::isfinite(*capture.exposure), "exposures are finite");
    require(!capture.exposureBias || std::isfinite(*capture.exposureBias), "exposure biases are finite");
}

void writeWithMetadata(const std::string &path) {
    const std::vector<uint8_t> camera = readCameraExif(path, true);
    if (camera.empty())
        return;
    constexpr std::array<uint8_t, 3> kPixel = {10, 20, 30};
    const PictureProperties properties{72, finishedExif(camera, 1, 1, 72)};
    require(!properties.exif.empty(), "what was read can be taken over");
    // Of all formats only TIFF takes the block apart.
    char *bytes = nullptr;
    size_t size = 0;
    std::FILE *const stream = open_memstream(&bytes, &size);
    const auto problem = encodeTiff({kPixel.data(), 1, 1, 3, PixelOrder::Rgb}, properties, {}, stream);
    std::fclose(stream);
    std::free(bytes);
    require(!problem, problem ? problem->c_str() : "");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::span<const uint8_t> content(data, size);
    readMetadata(content);
    const MemoryFile file(content);
    readHowItWasTaken(file.path());
    writeWithMetadata(file.path());
    return 0;
}
