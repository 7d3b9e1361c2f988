// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/batch/bracket_finder.h"

#include <algorithm>
#include <cmath>
#include <compare>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <numeric>
#include <span>
#include <utility>

namespace tristop {
namespace {

using std::chrono::microseconds;

constexpr double kSmallestStep = 0.5; ///< stops between two exposures of a bracket

/// The orders in which the exposures of a bracket may be taken, the usual ones of cameras first: positions of
/// the dark, the middle and the bright photograph.
constexpr std::array<std::array<size_t, 3>, 6> kOrders = {{
    {1, 0, 2}, // 0 - +
    {0, 1, 2}, // - 0 +
    {2, 1, 0}, // + 0 -
    {2, 0, 1}, // 0 + -
    {0, 2, 1}, // - + 0
    {1, 2, 0}, // + - 0
}};

std::string fileName(const Photograph &photograph) {
    return std::filesystem::path(photograph.path).filename().string();
}

std::string folderOf(const Photograph &photograph) {
    return std::filesystem::path(photograph.path).parent_path().string();
}

std::string inSeconds(microseconds time) {
    std::string text = std::to_string(std::chrono::duration<double>(time).count());
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.')
        text.pop_back();
    return text + " s";
}

using Values = std::array<std::optional<double>, 3>;

/// The order of three exposures that are far enough apart, as an index into kOrders.
std::optional<size_t> orderOf(const Values &values) {
    for (const auto &value : values)
        if (!value)
            return std::nullopt;
    for (size_t order = 0; order < kOrders.size(); ++order) {
        const auto [dark, middle, bright] = kOrders[order];
        if (*values[middle] - *values[dark] >= kSmallestStep &&
            *values[bright] - *values[middle] >= kSmallestStep)
            return order;
    }
    return std::nullopt;
}

/// Three photographs in a row that may be a bracket.
struct Candidate {
    size_t order;      ///< index into kOrders
    microseconds span; ///< from the first photograph to the last
};

/// What a choice of brackets is worth; greater is better.
struct Worth {
    int64_t inOrder = 0; ///< brackets taken in the order looked for
    int64_t brackets = 0;
    microseconds timeSaved{0};

    auto operator<=>(const Worth &) const = default;
};

class Finder {
public:
    Finder(const std::vector<Photograph> &photographs, const BracketRules &rules)
        : photographs(photographs), rules(rules), reasons(photographs.size()) {}

    BracketSearch find() {
        std::map<std::string, std::vector<size_t>> byCamera, byFolder;
        for (const size_t i : shots()) {
            const Capture &capture = photographs[i].capture;
            if (capture.time && (capture.exposure || capture.exposureBias))
                byCamera[capture.camera].push_back(i);
            else if (rules.threeByThree)
                byFolder[folderOf(photographs[i])].push_back(i);
            else
                reasons[i] = std::string("its headers do not tell ") +
                             (capture.time ? "its exposure" : "when it was taken") +
                             "; --group 3 takes such photographs three by three";
        }
        for (auto &[camera, taken] : byCamera)
            groupByExposure(taken);
        for (const auto &[folder, inFolder] : byFolder)
            groupInTurn(inFolder);
        return result();
    }

private:
    /// The photographs that can be read, one a shot, in the order given.
    std::vector<size_t> shots() {
        std::map<std::pair<std::string, std::string>, size_t> shown;
        const auto nameOf = [this](size_t i) {
            return std::pair(folderOf(photographs[i]),
                             std::filesystem::path(photographs[i].path).stem().string());
        };
        for (const auto format : {PhotographType::Jpeg, PhotographType::Raw})
            for (size_t i = 0; i < photographs.size(); ++i)
                if (photographs[i].format == format && photographs[i].failure.empty())
                    shown.emplace(nameOf(i), i);
        std::vector<size_t> result;
        for (size_t i = 0; i < photographs.size(); ++i) {
            if (!photographs[i].failure.empty())
                reasons[i] = photographs[i].failure;
            else if (const size_t same = shown.at(nameOf(i));
                     same != i && photographs[i].format == PhotographType::Raw)
                reasons[i] = "is the same shot as " + fileName(photographs[same]);
            else
                result.push_back(i);
        }
        return result;
    }

    microseconds pauseAllowed(const Capture &before) const {
        return rules.pause.value_or(kUsualPause) + 2 * before.exposureTime;
    }

    bool follows(size_t before, size_t after) const {
        const Capture &first = photographs[before].capture;
        const auto pause = *photographs[after].capture.time - *first.time;
        return pause >= microseconds(0) && pause <= pauseAllowed(first);
    }

    bool sameKind(size_t a, size_t b) const {
        const Photograph &one = photographs[a], &other = photographs[b];
        return one.format == other.format && one.capture.width == other.capture.width &&
               one.capture.height == other.capture.height;
    }

    std::optional<Candidate> candidate(std::span<const size_t, 3> three) const {
        if (!sameKind(three[0], three[1]) || !sameKind(three[1], three[2]))
            return std::nullopt;
        Values exposures, biases;
        for (size_t i = 0; i < 3; ++i) {
            exposures[i] = photographs[three[i]].capture.exposure;
            biases[i] = photographs[three[i]].capture.exposureBias;
        }
        auto order = orderOf(exposures);
        if (!order)
            order = orderOf(biases);
        if (!order)
            return std::nullopt;
        return Candidate{*order, *photographs[three[2]].capture.time - *photographs[three[0]].capture.time};
    }

    /// Groups the photographs of one camera.
    void groupByExposure(std::vector<size_t> &taken) {
        // Times of photographs in different folders are not mixed: one may be a copy of the other.
        std::ranges::stable_sort(taken, [this](size_t a, size_t b) {
            const std::string folderA = folderOf(photographs[a]), folderB = folderOf(photographs[b]);
            if (folderA != folderB)
                return naturallyBefore(folderA, folderB);
            return *photographs[a].capture.time < *photographs[b].capture.time;
        });
        std::vector<std::span<const size_t>> runs; // without a long pause
        for (size_t begin = 0, end = 0; begin < taken.size(); begin = end) {
            for (end = begin + 1; end < taken.size() && follows(taken[end - 1], taken[end]);)
                ++end;
            runs.emplace_back(&taken[begin], end - begin);
        }
        std::vector<Candidates> candidates;
        std::array<int64_t, kOrders.size()> explained{}; // brackets of the camera, by their order
        for (const auto &run : runs) {
            candidates.push_back(candidatesIn(run));
            for (size_t order = 0; order < kOrders.size(); ++order)
                explained[order] += choose(candidates.back(), order).first.inOrder;
        }
        std::array<size_t, kOrders.size()> orders{};
        std::iota(orders.begin(), orders.end(), size_t{0});
        std::ranges::stable_sort(orders, std::greater(), [&](size_t order) { return explained[order]; });
        for (size_t i = 0; i < runs.size(); ++i)
            groupRun(runs[i], candidates[i], orders);
    }

    using Candidates = std::vector<std::optional<Candidate>>; ///< by their first photographs

    Candidates candidatesIn(std::span<const size_t> run) const {
        Candidates result(run.size());
        for (size_t i = 0; i + 3 <= run.size(); ++i)
            result[i] = candidate(run.subspan(i).first<3>());
        return result;
    }

    /// Groups photographs that were taken without a long pause. Of equal choices the first of `orders`
    /// decides.
    void groupRun(std::span<const size_t> run, const Candidates &candidates, std::span<const size_t> orders) {
        std::pair<Worth, std::vector<size_t>> best;
        for (const size_t order : orders)
            if (auto choice = choose(candidates, order); choice.first > best.first)
                best = std::move(choice);
        std::vector<bool> used(run.size());
        for (const size_t start : best.second) {
            Bracket bracket{{}, run[start]};
            for (size_t i = 0; i < 3; ++i) {
                bracket.photographs[i] = run[start + kOrders[candidates[start]->order][i]];
                used[start + i] = true;
            }
            brackets.push_back(bracket);
        }
        explainUnused(run, used);
    }

    /// The best choice of candidates that do not overlap, by their starts, if brackets come in `order`.
    static std::pair<Worth, std::vector<size_t>> choose(const Candidates &candidates, size_t order) {
        std::vector<Worth> best(candidates.size() + 1); // of the first so many photographs
        std::vector<bool> chosen(candidates.size() + 1);
        for (size_t end = 1; end <= candidates.size(); ++end) {
            best[end] = best[end - 1];
            if (end < 3 || !candidates[end - 3])
                continue;
            const Candidate &last = *candidates[end - 3];
            Worth with = best[end - 3];
            ++with.brackets;
            with.inOrder += last.order == order;
            with.timeSaved -= last.span;
            chosen[end] = with > best[end];
            if (chosen[end])
                best[end] = with;
        }
        std::vector<size_t> starts;
        for (size_t end = candidates.size(); end >= 3; chosen[end] ? end -= 3 : --end)
            if (chosen[end])
                starts.push_back(end - 3);
        return {best.back(), std::move(starts)};
    }

    /// Says why photographs of a run are not used. Those left over side by side are explained together.
    void explainUnused(std::span<const size_t> run, const std::vector<bool> &used) {
        for (size_t begin = 0, end = 0; begin < run.size(); begin = end) {
            end = begin + 1;
            if (used[begin])
                continue;
            while (end < run.size() && !used[end])
                ++end;
            std::string reason;
            if (run.size() == 1)
                reason = "no photograph of the same camera was taken within " +
                         inSeconds(rules.pause.value_or(kUsualPause)) + " of it";
            else if (end - begin == 1)
                reason = "the photographs taken with it make a bracket without it";
            else if (end - begin == 2)
                reason = "only two photographs of a bracket are there";
            else
                reason = "the photographs taken with it differ in size or too little in exposure";
            for (size_t i = begin; i < end; ++i)
                reasons[run[i]] = reason;
        }
    }

    /// Groups photographs of one folder whose headers do not help, in their order.
    void groupInTurn(const std::vector<size_t> &inFolder) {
        for (size_t begin = 0, end = 0; begin < inFolder.size(); begin = end) {
            end = begin + 1;
            while (end < inFolder.size() && sameKind(inFolder[end - 1], inFolder[end]) &&
                   fileFollows(inFolder[end - 1], inFolder[end]))
                ++end;
            size_t start = begin;
            for (; start + 3 <= end; start += 3)
                brackets.push_back(
                    {{inFolder[start], inFolder[start + 1], inFolder[start + 2]}, inFolder[start]});
            for (; start < end; ++start)
                reasons[inFolder[start]] = "is left over when the " + std::to_string(end - begin) +
                                           " photographs taken with it are grouped three by three";
        }
    }

    bool fileFollows(size_t before, size_t after) const {
        const auto pause = photographs[after].modified - photographs[before].modified;
        return !rules.pause || std::chrono::abs(pause) <= *rules.pause;
    }

    BracketSearch result() {
        BracketSearch search;
        std::ranges::sort(brackets, {}, &Bracket::first);
        search.brackets = std::move(brackets);
        for (size_t i = 0; i < reasons.size(); ++i)
            if (!reasons[i].empty())
                search.unused.push_back({i, reasons[i]});
        return search;
    }

    const std::vector<Photograph> &photographs;
    const BracketRules &rules;
    std::vector<std::string> reasons; ///< by photograph; empty for one that is used
    std::vector<Bracket> brackets;
};

} // namespace

BracketSearch findBrackets(const std::vector<Photograph> &photographs, const BracketRules &rules) {
    return Finder(photographs, rules).find();
}

} // namespace tristop
