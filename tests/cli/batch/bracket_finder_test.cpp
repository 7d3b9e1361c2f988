// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/batch/bracket_finder.h"

#include <algorithm>
#include <cmath>
#include <map>

#include <gtest/gtest.h>

namespace tristop {
namespace {

using std::chrono::milliseconds;

/// A day of photographs, written down as a photographer would.
class Day {
public:
    /// Takes photographs `pause` milliseconds apart, of exposures in stops, the first one `pause` after the
    /// last.
    Day &take(const std::vector<double> &stops, int pause = 500, const std::string &camera = "A") {
        for (const double stop : stops) {
            clock += milliseconds(pause);
            add(camera, stop);
        }
        return *this;
    }
    Day &wait(int seconds) {
        clock += std::chrono::seconds(seconds);
        return *this;
    }
    Photograph &add(const std::string &camera, std::optional<double> stop) {
        const size_t number = photographs.size();
        Photograph photograph;
        photograph.path = "/card/" + std::to_string(1000 + number) + ".JPG";
        photograph.modified = clock;
        photograph.capture.width = 600;
        photograph.capture.height = 400;
        if (stop) {
            photograph.capture.camera = camera;
            photograph.capture.time = clock;
            photograph.capture.exposure = *stop - 8;
            photograph.capture.exposureBias = *stop;
        }
        photographs.push_back(photograph);
        return photographs.back();
    }

    BracketSearch search(const BracketRules &rules = {}) const { return findBrackets(photographs, rules); }

    /// The brackets as the numbers of their dark, middle and bright photographs.
    std::vector<std::array<size_t, 3>> brackets(const BracketRules &rules = {}) const {
        std::vector<std::array<size_t, 3>> result;
        for (const Bracket &bracket : search(rules).brackets)
            result.push_back(bracket.photographs);
        return result;
    }
    std::map<size_t, std::string> unused(const BracketRules &rules = {}) const {
        std::map<size_t, std::string> result;
        for (const auto &[photograph, reason] : search(rules).unused)
            result[photograph] = reason;
        return result;
    }

    std::vector<Photograph> photographs;
    CameraTime clock = CameraTime(std::chrono::sys_days(std::chrono::year(2024) / 5 / 31));
};

using Brackets = std::vector<std::array<size_t, 3>>;

TEST(BracketFinder, knowsTheOrdersOfCameras) {
    Day day;
    day.take({0, -2, 2}).wait(60).take({-2, 0, 2}).wait(60).take({2, 0, -2}).wait(60).take({-1, 2, 0.5});
    EXPECT_EQ(day.brackets(), (Brackets{{1, 0, 2}, {3, 4, 5}, {8, 7, 6}, {9, 11, 10}}));
    EXPECT_TRUE(day.unused().empty());
    for (size_t i = 0; i < 4; ++i)
        EXPECT_EQ(day.search().brackets[i].first, 3 * i);
}

TEST(BracketFinder, keepsStepInContinuousShooting) {
    for (const auto &order : {std::vector<double>{0, -2, 2}, {-2, 0, 2}, {2, 0, -2}, {0, 1, -1}}) {
        Day whole;
        for (int i = 0; i < 20; ++i)
            whole.take(order, 100);
        ASSERT_EQ(whole.brackets().size(), 20u);
        for (size_t i = 0; i < 20; ++i)
            EXPECT_EQ(whole.search().brackets[i].first, 3 * i);
    }
    Day torn; // the first photograph was deleted, and one in the midst
    torn.take({-2, 2}, 100)
        .take({0, -2, 2}, 100)
        .take({0, 2}, 100)
        .take({0, -2, 2}, 100)
        .take({0, -2, 2}, 100);
    EXPECT_EQ(torn.brackets(), (Brackets{{3, 2, 4}, {8, 7, 9}, {11, 10, 12}}));
    for (const size_t i : {0u, 1u, 5u, 6u})
        EXPECT_EQ(torn.unused().at(i), "only two photographs of a bracket are there");
    Day paused; // two brackets side by side: what is close in time belongs together
    paused.take({2}, 2000).take({0, -2, 2}, 200).take({0}, 2000).take({-2, 2}, 200);
    EXPECT_EQ(paused.brackets(), (Brackets{{2, 1, 3}, {5, 4, 6}}));
}

TEST(BracketFinder, tellsCamerasApart) {
    Day day;
    for (const double stop : {0.0, -2.0, 2.0}) {
        day.take({stop}, 100, "A");
        day.take({stop == 0 ? -1 : stop < 0 ? 0.0 : 1.0}, 100, "B");
    }
    EXPECT_EQ(day.brackets(), (Brackets{{2, 0, 4}, {1, 3, 5}}));
}

TEST(BracketFinder, asksForThreeDifferentExposuresOfOneKind) {
    Day alike;
    alike.take({0, 0.3, -0.3}).wait(60).take({0, -2, 0});
    EXPECT_TRUE(alike.brackets().empty());
    EXPECT_EQ(alike.unused().at(5), "the photographs taken with it differ in size or too little in exposure");
    Day turned;
    turned.take({0, -2, 2});
    std::swap(turned.photographs[1].capture.width, turned.photographs[1].capture.height);
    EXPECT_TRUE(turned.brackets().empty());
    Day mixed;
    mixed.take({0, -2, 2});
    mixed.photographs[2].format = PhotographType::Raw;
    EXPECT_TRUE(mixed.brackets().empty());
    Day manual; // the exposure was set by hand, without a bias
    manual.take({0, -2, 2}).wait(60).take({0, -2, 2});
    for (size_t i = 0; i < 3; ++i)
        manual.photographs[i].capture.exposureBias = 0;
    for (size_t i = 3; i < 6; ++i)
        manual.photographs[i].capture.exposure.reset();
    EXPECT_EQ(manual.brackets(), (Brackets{{1, 0, 2}, {4, 3, 5}}));
}

TEST(BracketFinder, limitsThePauses) {
    const auto atPause = [](int pause) {
        Day day;
        day.take({0, -2, 2}, pause);
        return day;
    };
    EXPECT_EQ(atPause(5000).brackets().size(), 1u);
    EXPECT_TRUE(atPause(5001).brackets().empty());
    EXPECT_EQ(atPause(5001).unused().at(1), "no photograph of the same camera was taken within 5 s of it");
    EXPECT_EQ(atPause(20000).brackets({std::chrono::seconds(20), false}).size(), 1u);
    EXPECT_TRUE(atPause(1001).brackets({std::chrono::seconds(1), false}).empty());
    Day night = atPause(60000); // a camera takes as long again to remove the noise of half a minute
    for (Photograph &photograph : night.photographs)
        photograph.capture.exposureTime = std::chrono::seconds(30);
    EXPECT_EQ(night.brackets().size(), 1u);
}

TEST(BracketFinder, explainsIncompleteBrackets) {
    Day day;
    day.take({0, -2}).wait(60).take({1}).wait(60).take({0, -2, 2, 2});
    EXPECT_EQ(day.brackets(), (Brackets{{4, 3, 5}}));
    const auto unused = day.unused();
    EXPECT_EQ(unused.at(0), "only two photographs of a bracket are there");
    EXPECT_EQ(unused.at(1), unused.at(0));
    EXPECT_EQ(unused.at(2), "no photograph of the same camera was taken within 5 s of it");
    EXPECT_EQ(unused.at(6), "the photographs taken with it make a bracket without it");
    EXPECT_EQ(unused.size(), 4u);
}

TEST(BracketFinder, countsRawAndJpegOfOneShotOnce) {
    Day day;
    for (const double stop : {0.0, -2.0, 2.0}) {
        Photograph raw = day.take({stop}).photographs.back();
        raw.format = PhotographType::Raw;
        raw.path.replace(raw.path.size() - 3, 3, "NEF");
        raw.capture.width += 8;
        day.photographs.insert(day.photographs.end() - 1, raw);
    }
    EXPECT_EQ(day.brackets(), (Brackets{{3, 1, 5}}));
    EXPECT_EQ(day.unused().at(2), "is the same shot as 1002.JPG");
    for (const size_t jpeg : {1u, 3u, 5u})
        day.photographs[jpeg].failure = "is empty";
    EXPECT_EQ(day.brackets(), (Brackets{{2, 0, 4}})) << "the RAW files stand in";
    EXPECT_EQ(day.unused().at(3), "is empty");
}

TEST(BracketFinder, keepsCopiesInOtherFoldersApart) {
    Day day;
    day.take({0, -2, 2}).wait(60).take({0, -2, 2});
    const auto originals = day.photographs;
    for (Photograph copy : originals) {
        copy.path.replace(0, 5, "/copy");
        day.photographs.push_back(copy);
    }
    EXPECT_EQ(day.brackets(), (Brackets{{1, 0, 2}, {4, 3, 5}, {7, 6, 8}, {10, 9, 11}}));
}

TEST(BracketFinder, takesThreeByThreeWhatHasNoMetadata) {
    Day day;
    for (int i = 0; i < 7; ++i) {
        day.wait(i == 3 ? 100 : 1);
        day.add("", std::nullopt);
    }
    day.take({0, -2, 2});
    EXPECT_EQ(day.brackets(), (Brackets{{8, 7, 9}}));
    EXPECT_EQ(day.unused().at(0),
              "its headers do not tell when it was taken; --group 3 takes such photographs "
              "three by three");
    EXPECT_EQ(day.brackets({std::nullopt, true}), (Brackets{{0, 1, 2}, {3, 4, 5}, {8, 7, 9}}));
    EXPECT_EQ(day.unused({std::nullopt, true}).at(6),
              "is left over when the 7 photographs taken with it are grouped three by three");
    std::ranges::rotate(day.photographs,
                        day.photographs.begin() + 1); // six more begin with a pause after two
    EXPECT_EQ(day.brackets({std::chrono::seconds(10), true}), (Brackets{{2, 3, 4}, {7, 6, 8}}));
}

} // namespace
} // namespace tristop
