// SPDX-License-Identifier: MIT
// The public calls and the driver: settings, progress, cancellation, determinism and failing allocations.
#include "engine/core/context.h"
#include "engine/core/pipeline.h"
#include "tests/support/synthetic_bracket.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>

namespace {

// The engine's calls to malloc and free arrive here (the linker wraps them in this program).
std::atomic<long> liveBlocks = 0;
std::atomic<long> allocations = 0;
long failAt = -1; ///< the allocation to refuse, counted from 0
bool counting = false;

} // namespace

extern "C" {
void *__real_malloc(size_t size);
void __real_free(void *pointer);
void *__wrap_malloc(size_t size) {
    if (!counting)
        return __real_malloc(size);
    if (allocations++ == failAt)
        return nullptr;
    liveBlocks++;
    return __real_malloc(size);
}
void __wrap_free(void *pointer) {
    if (counting && pointer)
        liveBlocks--;
    __real_free(pointer);
}
}

namespace hdr {
namespace {

using test::Bracket;
using test::BracketSettings;

struct Merged {
    HdrStatus status = -1;
    HdrRunInfo info{};
    std::vector<uint8_t> picture;
};

/// Merges the bracket's pictures in the given order with a fresh context.
Merged merge(const BracketSettings &settings, std::array<size_t, 3> order = {0, 1, 2}, int ghostLevel = 6,
             HdrParams look = {45, 10, 40}) {
    Bracket bracket(settings);
    std::array<Offscreen, 3> inputs;
    for (size_t i = 0; i < 3; i++)
        inputs[i] = bracket.pictures[order[i]];
    HdrContext *context = nullptr;
    Merged run;
    EXPECT_EQ(hdrCreate(nullptr, 0, &context), HDR_OK);
    hdrSetGhostSuppressionLevel(nullptr, context, ghostLevel);
    run.status =
        hdrProcess(nullptr, context, inputs.data(), 3, inputs.data(), 2, &look, nullptr, nullptr, nullptr);
    EXPECT_EQ(hdrGetRunInfo(context, &run.info), HDR_OK);
    EXPECT_EQ(hdrDestroy(nullptr, context), HDR_OK);
    run.picture = bracket.bytes[order[2]];
    return run;
}

TEST(SplitBands, InnerEdgesAreMultiplesOfEight) {
    const auto rows = [](int top, int height) {
        std::vector<uint32_t> edges;
        for (const HdrBand &band : splitBands(top, height)) {
            EXPECT_EQ(band.firstRow, static_cast<uint32_t>(top) + band.relativeFirst);
            edges.push_back(band.firstRow);
            edges.push_back(band.endRow);
        }
        return edges;
    };
    EXPECT_EQ(rows(7, 10), (std::vector<uint32_t>{7, 7, 7, 7, 7, 7, 7, 17}));
    EXPECT_EQ(rows(0, 100), (std::vector<uint32_t>{0, 24, 24, 48, 48, 72, 72, 100}));
}

TEST(PublicCalls, RefuseWhatTheyCannotUse) {
    EXPECT_EQ(hdrDestroy(nullptr, nullptr), HDR_ERR_NOMEM);
    EXPECT_EQ(hdrReleaseRunBuffers(nullptr, nullptr), HDR_ERR_NOMEM);
    EXPECT_EQ(hdrGetRunInfo(nullptr, nullptr), HDR_ERR_PARAM);
    Bracket bracket({});
    Offscreen *pictures = bracket.pictures.data();
    EXPECT_EQ(hdrProcess(nullptr, nullptr, pictures, 3, pictures, 2, nullptr, nullptr, nullptr, nullptr),
              HDR_ERR_PARAM);
    HdrContext *context = nullptr;
    ASSERT_EQ(hdrCreate(nullptr, 0, &context), HDR_OK);
    const auto process = [&](int index) {
        return hdrProcess(nullptr, context, pictures, 3, pictures, index, nullptr, nullptr, nullptr, nullptr);
    };
    EXPECT_EQ(process(3), HDR_ERR_PARAM);
    Bracket others({});
    EXPECT_EQ(hdrProcess(nullptr, context, pictures, 3, others.pictures.data(), 2, nullptr, nullptr, nullptr,
                         nullptr),
              HDR_ERR_PARAM);
    pictures[1].i32Height--;
    EXPECT_EQ(process(2), HDR_ERR_PARAM);
    pictures[1].i32Height++;
    pictures[2].u32PixelArrayFormat = HDR_FORMAT_YUV444;
    EXPECT_EQ(process(2), HDR_ERR_FORMAT);
    hdrDestroy(nullptr, context);
}

TEST(PublicCalls, SettingsAreClamped) {
    HdrContext *context = nullptr;
    ASSERT_EQ(hdrCreate(nullptr, 0, &context), HDR_OK);
    hdrSetGhostSuppressionLevel(nullptr, context, -5);
    EXPECT_EQ(context->ghostSuppressionLevel, 0);
    hdrSetGhostSuppressionLevel(nullptr, context, 11);
    EXPECT_EQ(context->ghostSuppressionLevel, 10);
    const auto seen = [context](const HdrParams *parameters) {
        Bracket bracket({160, 120});
        Offscreen *pictures = bracket.pictures.data();
        // Stop at the first report of the driver: the settings are in place, nothing has changed them yet.
        const auto stop = [](int64_t, int64_t, void *user) -> int64_t { return user ? HDR_CANCELLED : 0; };
        int user = 0;
        EXPECT_EQ(hdrProcess(nullptr, context, pictures, 3, pictures, 2, parameters, nullptr, stop, &user),
                  HDR_CANCELLED);
        return std::array<int, 3>{context->toneLength, context->brightness, context->toneSaturation};
    };
    using Values = std::array<int, 3>;
    EXPECT_EQ(seen(nullptr), (Values{25, 0, 0}));
    const HdrParams low = {0, -100, 0};
    EXPECT_EQ(seen(&low), (Values{0, -100, 0}));
    const HdrParams high = {100, 100, 100};
    EXPECT_EQ(seen(&high), (Values{100, 100, 100}));
    const HdrParams beyond = {101, 101, 101};
    EXPECT_EQ(seen(&beyond), (Values{25, 0, 0}));
    const HdrParams below = {-1, -101, -1};
    EXPECT_EQ(seen(&below), (Values{25, 0, 0}));
    const HdrParams lowBitsOnly = {(int64_t{1} << 32) + 7, (int64_t{1} << 40) + 8, (int64_t{1} << 33) + 9};
    EXPECT_EQ(seen(&lowBitsOnly), (Values{7, 8, 9}));
    hdrDestroy(nullptr, context);
}

TEST(Progress, RisesToTheEndAndCancelsAnywhere) {
    struct Log {
        std::vector<int64_t> preparation; ///< percentages, reported without user data
        std::vector<int64_t> driver;
        size_t stopAt = SIZE_MAX; ///< the report that asks to stop
    };
    static Log *log = nullptr;
    const auto report = [](int64_t percent, int64_t zero, void *user) -> int64_t {
        EXPECT_EQ(zero, 0);
        (user ? log->driver : log->preparation).push_back(percent);
        return log->preparation.size() + log->driver.size() > log->stopAt ? int64_t{HDR_CANCELLED} : 0;
    };
    const auto run = [&](Log &into) {
        log = &into;
        Bracket bracket({320, 640});
        Offscreen *pictures = bracket.pictures.data();
        HdrContext *context = nullptr;
        EXPECT_EQ(hdrCreate(nullptr, 0, &context), HDR_OK);
        const HdrStatus status =
            hdrProcess(nullptr, context, pictures, 3, pictures, 2, nullptr, nullptr, report, log);
        hdrDestroy(nullptr, context);
        return status;
    };
    Log whole;
    ASSERT_EQ(run(whole), HDR_OK);
    EXPECT_TRUE(std::is_sorted(whole.preparation.begin(), whole.preparation.end()));
    EXPECT_LE(whole.preparation.size(), 80u);
    // 640 rows: band 0 has 160 and reports every 32nd.
    EXPECT_EQ(whole.driver, (std::vector<int64_t>{5, 10, 15, 20, 25, 25, 40, 55, 70, 85}));
    for (size_t stop = 0; stop < whole.preparation.size() + whole.driver.size(); stop++) {
        Log cut;
        cut.stopAt = stop;
        EXPECT_EQ(run(cut), HDR_CANCELLED) << stop;
        EXPECT_EQ(cut.preparation.size() + cut.driver.size(), stop + 1);
    }
}

TEST(WholeRun, SameBytesInEveryOrderAndEveryTime) {
    BracketSettings settings;
    settings.displacement = {{{3.0, -2.0}, {0, 0}, {-4.0, 5.0}}};
    settings.movingSquare = 40;
    const Merged first = merge(settings);
    ASSERT_EQ(first.status, HDR_OK);
    EXPECT_EQ(first.info.darkIndex, 0);
    EXPECT_EQ(first.info.brightIndex, 2);
    std::array<size_t, 3> order = {0, 1, 2};
    do {
        const Merged again = merge(settings, order);
        EXPECT_EQ(again.status, HDR_OK);
        EXPECT_TRUE(again.picture == first.picture) << order[0] << order[1] << order[2];
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST(WholeRun, AwkwardSizesStayInsideTheirBuffers) {
    for (const auto &[width, height] : {std::pair{100, 100},
                                        {101, 103},
                                        {102, 131},
                                        {107, 100},
                                        {128, 160},
                                        {129, 161},
                                        {352, 100},
                                        {100, 357},
                                        {515, 259}}) {
        BracketSettings settings;
        settings.width = width;
        settings.height = height;
        settings.displacement = {{{6.0, 3.0}, {0, 0}, {-5.0, -7.0}}};
        const Merged merged = merge(settings);
        EXPECT_EQ(merged.status, HDR_OK) << width << " x " << height;
        EXPECT_EQ(merged.info.fallback, HDR_FALLBACK_NONE) << width << " x " << height;
    }
}

TEST(WholeRun, EveryFailedAllocationIsReportedAndLeaksNothing) {
    BracketSettings settings;
    settings.width = 132;
    settings.height = 116;
    Bracket bracket(settings);
    const auto run = [&](long fail) {
        Bracket inputs(settings);
        Offscreen *pictures = inputs.pictures.data();
        liveBlocks = 0;
        counting = true;
        allocations = 0;
        failAt = fail;
        HdrContext *context = nullptr;
        HdrStatus status = hdrCreate(nullptr, 0, &context);
        if (status == HDR_OK)
            status =
                hdrProcess(nullptr, context, pictures, 3, pictures, 2, nullptr, nullptr, nullptr, nullptr);
        if (context) {
            EXPECT_EQ(hdrDestroy(nullptr, context), HDR_OK);
        }
        counting = false;
        EXPECT_EQ(liveBlocks, 0) << "allocation " << fail;
        return status;
    };
    ASSERT_EQ(run(-1), HDR_OK);
    const long count = allocations;
    ASSERT_GT(count, 50);
    long refused = 0;
    for (long fail = 0; fail < count; fail++) {
        const HdrStatus status = run(fail);
        EXPECT_TRUE(status == HDR_ERR_NOMEM || status == HDR_OK) << fail << ": " << status;
        refused += status == HDR_ERR_NOMEM;
    }
    // Filters and ghost detection may go on without their helpers; everything else has to say so.
    EXPECT_GT(refused, count / 2);
}

TEST(WholeRun, AnArenaHoldsAWholeRun) {
    BracketSettings settings;
    settings.width = 132;
    settings.height = 116;
    const auto runIn = [&](size_t bytes) {
        Bracket bracket(settings);
        Offscreen *pictures = bracket.pictures.data();
        std::vector<ArenaHeader> arena(bytes / sizeof(ArenaHeader));
        arena.front() = {static_cast<int64_t>(bytes) - 32, 0};
        arena.back().size = kArenaEnd;
        MemContext *memory = reinterpret_cast<MemContext *>(arena.data());
        HdrContext *context = nullptr;
        HdrStatus status = hdrCreate(memory, 0, &context);
        if (status == HDR_OK)
            status =
                hdrProcess(memory, context, pictures, 3, pictures, 2, nullptr, nullptr, nullptr, nullptr);
        if (context)
            hdrDestroy(memory, context);
        EXPECT_EQ(arena.front().size, static_cast<int64_t>(bytes) - 32) << "one free block again";
        EXPECT_EQ(arena.front().inUse, 0u);
        return status;
    };
    EXPECT_EQ(runIn(16 << 20), HDR_OK);
    EXPECT_EQ(runIn(256 << 10), HDR_ERR_NOMEM);
}

} // namespace
} // namespace hdr
