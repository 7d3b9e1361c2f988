// SPDX-License-Identifier: MIT
// The public calls and the driver: settings, progress, cancellation, determinism and failing allocations.
#include "engine/core/context.h"
#include "engine/core/pipeline.h"
#include "tests/support/arena.h"
#include "tests/support/synthetic_bracket.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <utility>

namespace {

// The engine's calls to malloc and free arrive here (the linker wraps them in this program).
std::atomic<long> liveBlocks = 0;
std::atomic<long> allocations = 0;
long failAt = -1;      ///< the allocation to refuse, counted from 0
int stepsDone = 0;     ///< steps of the run that have ended well
int refusedAfter = -1; ///< that number at the refusal
bool counting = false;

} // namespace

extern "C" {
void *__real_malloc(size_t size);
void __real_free(void *pointer);
void *__wrap_malloc(size_t size) {
    if (!counting)
        return __real_malloc(size);
    if (allocations++ == failAt) {
        refusedAfter = stepsDone;
        return nullptr;
    }
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

/// A context that goes with the test, and a bracket to merge.
struct MergeRun {
    explicit MergeRun(const BracketSettings &settings, MemContext *memory = nullptr)
        : bracket(settings), memory(memory), status(hdrCreate(memory, 0, &context)) {}
    ~MergeRun() {
        if (context) {
            EXPECT_EQ(hdrDestroy(memory, context), HDR_OK);
        }
    }
    MergeRun(const MergeRun &) = delete;
    MergeRun &operator=(const MergeRun &) = delete;

    HdrStatus process(const HdrParams *look = nullptr, int index = 2, ProgressCallback callback = nullptr,
                      void *user = nullptr) {
        if (status == HDR_OK)
            status = hdrProcess(memory, context, pictures, 3, pictures, index, look, nullptr, callback, user);
        return std::exchange(status, HDR_OK);
    }

    Bracket bracket;
    Offscreen *pictures = bracket.pictures.data();
    MemContext *memory;
    HdrContext *context = nullptr;
    HdrStatus status;
};

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
    MergeRun run({}), others({});
    EXPECT_EQ(
        hdrProcess(nullptr, nullptr, run.pictures, 3, run.pictures, 2, nullptr, nullptr, nullptr, nullptr),
        HDR_ERR_PARAM);
    EXPECT_EQ(hdrProcess(nullptr, run.context, run.pictures, 3, others.pictures, 2, nullptr, nullptr, nullptr,
                         nullptr),
              HDR_ERR_PARAM);
    EXPECT_EQ(run.process(nullptr, 3), HDR_ERR_PARAM);
    EXPECT_EQ(run.process(nullptr, -1), HDR_ERR_PARAM);
    const auto refuses = [&run](auto &field, auto value, HdrStatus status) {
        const auto kept = std::exchange(field, value);
        EXPECT_EQ(run.process(), status);
        field = kept;
    };
    refuses(run.pictures[1].i32Height, 239, HDR_ERR_PARAM);
    refuses(run.pictures[1].i32Width, 318, HDR_ERR_PARAM);
    refuses(run.pictures[1].pi32Pitch[0], 639, HDR_ERR_PARAM);
    refuses(run.pictures[0].ppu8Plane[0], nullptr, HDR_ERR_PARAM);
    refuses(run.pictures[2].u32PixelArrayFormat, HDR_FORMAT_YUV444, HDR_ERR_FORMAT);
    EXPECT_EQ(MergeRun({.width = 98, .height = 100}).process(), HDR_ERR_PARAM);
    EXPECT_EQ(MergeRun({.width = 100, .height = 99}).process(), HDR_ERR_PARAM);
    // Nothing is read of what is too large.
    for (const auto &[width, height] : {std::array{65536, 100}, {100, 65536}, {32768, 16385}}) {
        for (Offscreen &picture : run.bracket.pictures) {
            picture.i32Width = width;
            picture.i32Height = height;
            picture.pi32Pitch[0] = 2 * width;
        }
        EXPECT_EQ(run.process(), HDR_ERR_PARAM) << width << " x " << height;
    }
}

TEST(PublicCalls, SettingsAreClamped) {
    MergeRun run({.width = 160, .height = 120});
    hdrSetGhostSuppressionLevel(nullptr, run.context, -5);
    EXPECT_EQ(run.context->ghostSuppressionLevel, 0);
    hdrSetGhostSuppressionLevel(nullptr, run.context, 11);
    EXPECT_EQ(run.context->ghostSuppressionLevel, 10);
    const auto seen = [&run](const HdrParams *parameters) {
        // Stop at the first report of the driver: the settings are in place, nothing has changed them yet.
        const auto stop = [](int64_t, int64_t, void *user) -> int64_t { return user ? HDR_CANCELLED : 0; };
        EXPECT_EQ(run.process(parameters, 2, stop, &run), HDR_CANCELLED);
        return std::array{run.context->toneLength, run.context->brightness, run.context->toneSaturation};
    };
    EXPECT_EQ(seen(nullptr), (std::array{25, 0, 0}));
    constexpr int64_t kHigh = int64_t{1} << 32;
    for (const auto &[wanted, taken] :
         {std::pair{HdrParams{0, -100, 0}, std::array{0, -100, 0}},
          {{100, 100, 100}, {100, 100, 100}},
          {{101, 101, 101}, {25, 0, 0}},
          {{-1, -101, -1}, {25, 0, 0}},
          {{kHigh + 7, 8 * kHigh + 8, 2 * kHigh + 9}, {7, 8, 9}}}) // low bits only
        EXPECT_EQ(seen(&wanted), taken);
}

TEST(Progress, RisesToTheEndAndCancelsAnywhere) {
    struct Log {
        std::vector<int64_t> preparation; ///< counted from 1, reported without user data
        std::vector<int64_t> driver;      ///< percentages
        size_t stopAt = SIZE_MAX;         ///< the report that asks to stop
    };
    static Log *log = nullptr;
    const auto logged = [](size_t stopAt) {
        Log made;
        made.stopAt = stopAt;
        log = &made;
        const auto report = [](int64_t percent, int64_t zero, void *user) -> int64_t {
            EXPECT_EQ(zero, 0);
            (user ? log->driver : log->preparation).push_back(percent);
            return log->preparation.size() + log->driver.size() > log->stopAt ? int64_t{HDR_CANCELLED} : 0;
        };
        EXPECT_EQ(MergeRun({.width = 160, .height = 640}).process(nullptr, 2, report, log),
                  stopAt == SIZE_MAX ? HDR_OK : HDR_CANCELLED);
        return made;
    };
    const Log whole = logged(SIZE_MAX);
    const size_t prepared = whole.preparation.size();
    EXPECT_LE(prepared, 80u);
    ASSERT_GT(prepared, 10u);
    for (size_t i = 0; i < prepared; i++)
        EXPECT_EQ(whole.preparation[i], static_cast<int64_t>(i) + 1);
    // 640 rows: band 0 has 160 and reports every 32nd.
    EXPECT_EQ(whole.driver, (std::vector<int64_t>{5, 10, 15, 20, 25, 25, 40, 55, 70, 85}));
    for (size_t stop = 0; stop < prepared + whole.driver.size(); stop++) {
        const Log cut = logged(stop);
        EXPECT_EQ(cut.preparation.size() + cut.driver.size(), stop + 1);
    }
}

TEST(WholeRun, SameBytesInEveryOrderAndEveryTime) {
    const BracketSettings settings = {
        .displacement = {{{3.0, -2.0}, {0, 0}, {-4.0, 5.0}}}, .rotation = {0.5, 0, -0.5}, .movingSquare = 40};
    std::vector<uint8_t> first;
    std::array<size_t, 3> order = {0, 1, 2};
    do {
        MergeRun run(settings);
        std::array<Offscreen, 3> inputs;
        for (size_t i = 0; i < 3; i++)
            inputs[i] = run.bracket.pictures[order[i]];
        run.pictures = inputs.data();
        hdrSetGhostSuppressionLevel(nullptr, run.context, 6);
        const HdrParams look = {45, 10, 40};
        ASSERT_EQ(run.process(&look), HDR_OK);
        HdrRunInfo info;
        EXPECT_EQ(hdrGetRunInfo(run.context, &info), HDR_OK);
        EXPECT_EQ(order[static_cast<size_t>(info.darkIndex)], 0u);
        EXPECT_EQ(order[static_cast<size_t>(info.brightIndex)], 2u);
        // The cropped picture fills the records of the reference and the bright exposure as well.
        const std::vector<uint8_t> &picture = run.bracket.bytes[order[2]];
        EXPECT_TRUE(picture == run.bracket.bytes[1] && picture == run.bracket.bytes[2]);
        if (first.empty())
            first = picture;
        EXPECT_TRUE(picture == first) << order[0] << order[1] << order[2];
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST(WholeRun, NothingOfARunReachesTheNextOne) {
    MergeRun fresh({}), used({});
    ASSERT_EQ(fresh.process(), HDR_OK);
    const auto merged = [&used](const Offscreen &dark, const Offscreen &mid, const Offscreen &bright) {
        std::array<Offscreen, 3> pictures = {dark, mid, bright};
        used.pictures = pictures.data();
        EXPECT_EQ(used.process(), HDR_OK);
        HdrRunInfo info;
        EXPECT_EQ(hdrGetRunInfo(used.context, &info), HDR_OK);
        EXPECT_EQ(info.excluded[0] + info.excluded[2], info.fallback == HDR_FALLBACK_NONE ? 0 : 2);
        return info.fallback;
    };
    // First one of three scenes, which cannot be merged.
    const Bracket one({}), another({.seed = 78}), third({.seed = 77});
    EXPECT_EQ(merged(another.pictures[0], one.pictures[1], third.pictures[2]), HDR_FALLBACK_FEATURES);
    const auto &own = used.bracket.pictures;
    EXPECT_EQ(merged(own[0], own[1], own[2]), HDR_FALLBACK_NONE);
    EXPECT_TRUE(used.bracket.bytes == fresh.bracket.bytes);
}

TEST(WholeRun, AwkwardSizesStayInsideTheirBuffers) {
    constexpr int kSizes[][2] = {{100, 100}, {101, 103}, {102, 131}, {107, 100}, {128, 160},
                                 {129, 161}, {352, 100}, {100, 357}, {515, 259}};
    for (const auto &[width, height] : kSizes) {
        MergeRun run(
            {.width = width, .height = height, .displacement = {{{6.0, 3.0}, {0, 0}, {-5.0, -7.0}}}});
        EXPECT_EQ(run.process(), HDR_OK) << width << " x " << height;
        HdrRunInfo info;
        EXPECT_EQ(hdrGetRunInfo(run.context, &info), HDR_OK);
        EXPECT_EQ(info.fallback, HDR_FALLBACK_NONE) << width << " x " << height;
    }
}

TEST(WholeRun, EveryFailedAllocationIsReportedAndLeaksNothing) {
    const auto runWithout = [&](long refused) {
        MergeRun run({.width = 132, .height = 116, .displacement = {{{4, 3}, {0, 0}, {0, -2}}}});
        hdrDestroy(nullptr, std::exchange(run.context, nullptr));
        stepsDone = 0;
        liveBlocks = 0;
        allocations = 0;
        failAt = refused;
        counting = true;
        run.status = hdrCreate(nullptr, 0, &run.context);
        if (run.status == HDR_OK)
            hdrSetStepObserver(
                run.context, [](const HdrContext *, int32_t, void *) { stepsDone++; }, nullptr);
        const HdrStatus status = run.process();
        if (run.context) {
            EXPECT_EQ(hdrDestroy(nullptr, std::exchange(run.context, nullptr)), HDR_OK);
        }
        counting = false;
        EXPECT_EQ(liveBlocks, 0) << "allocation " << refused;
        return status;
    };
    ASSERT_EQ(runWithout(-1), HDR_OK);
    const long count = allocations;
    ASSERT_GT(count, 50);
    // Filters, ghost detection and colour maps may go on without their tables; everything else has to say
    // so.
    long wentOn = 0;
    for (long refused = 0; refused < count; refused++) {
        const HdrStatus status = runWithout(refused);
        const bool mayGoOn = refusedAfter >= HDR_STEP_CHROMA_WEIGHTS && refusedAfter <= HDR_STEP_RENDER_SETUP;
        if (status == HDR_OK && mayGoOn)
            wentOn++;
        else
            EXPECT_EQ(status, HDR_ERR_NOMEM) << "allocation " << refused;
    }
    EXPECT_LT(wentOn, count / 10);
}

TEST(WholeRun, AnArenaHoldsAWholeRun) {
    for (const auto &[bytes, status] : {std::pair{16 << 20, int{HDR_OK}}, {256 << 10, HDR_ERR_NOMEM}}) {
        test::Arena arena(static_cast<size_t>(bytes));
        EXPECT_EQ(MergeRun({.width = 132, .height = 116}, arena.memory()).process(), status);
        EXPECT_TRUE(arena.isEmpty());
    }
}

} // namespace
} // namespace hdr
