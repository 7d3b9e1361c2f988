// SPDX-License-Identifier: GPL-3.0-or-later
// Time of each stage of a run and of the whole run, and of the filters that the stages lean on.
#include "engine/analysis/guided_filter.h"
#include "engine/analysis/plane_filters.h"
#include "engine/core/offscreen.h"
#include "engine/core/output_crop_resize.h"
#include "engine/hdr_engine.h"
#include "engine/prepare/reduction.h"
#include "tests/support/synthetic_bracket.h"

#include <benchmark/benchmark.h>

#include <numeric>
#include <string>

namespace {

constexpr int kWidth = 6000;
constexpr int kHeight = 4000;
constexpr double kMegapixels = kWidth * kHeight / 1e6;

const hdr::test::Bracket &bracket() {
    static const hdr::test::Bracket made([] {
        hdr::test::BracketSettings settings;
        settings.width = kWidth;
        settings.height = kHeight;
        settings.displacement = {{{7.0, -5.0}, {0, 0}, {-6.0, 9.0}}};
        settings.movingSquare = 300;
        return settings;
    }());
    return made;
}

/// Merges a copy of the bracket and returns what the run reports.
HdrRunInfo mergeOnce() {
    std::array<std::vector<uint8_t>, 3> bytes = bracket().bytes;
    std::array<Offscreen, 3> pictures = bracket().pictures;
    for (size_t i = 0; i < 3; i++)
        pictures[i].ppu8Plane[0] = bytes[i].data();
    HdrContext *context = nullptr;
    hdrCreate(nullptr, 0, &context);
    hdrSetGhostSuppressionLevel(nullptr, context, 6);
    const HdrParams look = {45, 10, 40};
    hdrProcess(nullptr, context, pictures.data(), 3, pictures.data(), 2, &look, nullptr, nullptr, nullptr);
    HdrRunInfo info{};
    hdrGetRunInfo(context, &info);
    hdrDestroy(nullptr, context);
    return info;
}

/// Reports the time of one step, or of all of them for HDR_STEP_COUNT, over whole runs.
void step(benchmark::State &state, int index) {
    for (auto _ : state) {
        const HdrRunInfo info = mergeOnce();
        const int64_t *times = info.stepMicroseconds;
        const int64_t time = index < HDR_STEP_COUNT
                                 ? times[index]
                                 : std::accumulate(times, times + HDR_STEP_COUNT, int64_t{0});
        state.SetIterationTime(static_cast<double>(time) / 1e6);
    }
    state.counters["MP/s"] = benchmark::Counter(kMegapixels * static_cast<double>(state.iterations()),
                                                benchmark::Counter::kIsRate);
}

struct ReducedPicture {
    Offscreen *picture = nullptr;
    ReducedPicture() {
        hdr::offscreenAlloc(&picture, 2 * (kWidth / 16), 2 * (kHeight / 16), HDR_FORMAT_YUV444, nullptr);
        hdr::reduceToWorking(nullptr, &bracket().pictures[1], picture, nullptr, 8, 0);
    }
    ~ReducedPicture() { hdr::offscreenFree(&picture, nullptr); }
};

void reduction(benchmark::State &state) {
    ReducedPicture reduced;
    for (auto _ : state)
        hdr::reduceToWorking(nullptr, &bracket().pictures[1], reduced.picture, nullptr, 8, 0);
}

void guidedFilter(benchmark::State &state) {
    ReducedPicture reduced;
    const int width = reduced.picture->i32Width;
    const int height = reduced.picture->i32Height;
    std::vector<int16_t> target(static_cast<size_t>(width * height), 256);
    for (auto _ : state)
        hdr::guided_filter_s16(nullptr, reduced.picture, target.data(), 16, nullptr, target.data(), 1, 4.0);
}

void boxMean(benchmark::State &state) {
    const int width = 2 * (kWidth / 16);
    const int height = 2 * (kHeight / 16);
    std::vector<int16_t> plane(static_cast<size_t>(width * height), 100);
    for (auto _ : state)
        hdr::box_mean_s16(nullptr, plane.data(), width, height, width, static_cast<int>(state.range(0)), 1);
}

void cropResize(benchmark::State &state) {
    std::vector<uint8_t> bytes(bracket().bytes[0].size());
    Offscreen destination = bracket().pictures[0];
    destination.ppu8Plane[0] = bytes.data();
    for (auto _ : state) {
        hdr::Rect crop = {16, 16, kWidth - 16, kHeight - 16};
        hdr::outputCropResize(nullptr, &bracket().pictures[1], &destination, &crop);
    }
}

BENCHMARK(reduction)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(guidedFilter)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(boxMean)->Arg(1)->Arg(16)->Arg(32)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(cropResize)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char **argv) {
    for (int index = 0; index <= HDR_STEP_COUNT; index++) {
        const std::string name = index < HDR_STEP_COUNT ? hdrStepName(index) : "whole run";
        benchmark::RegisterBenchmark(("24 MP/" + name).c_str(), step, index)
            ->UseManualTime()
            ->Iterations(3)
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
