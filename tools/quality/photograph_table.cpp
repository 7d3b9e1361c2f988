// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/hdr_engine_bridge.h"
#include "tools/quality/study.h"

#include <algorithm>
#include <cstdio>

namespace tristop::quality {

namespace {

std::vector<std::filesystem::path> sorted(const std::filesystem::path &folder) {
    std::vector<std::filesystem::path> entries;
    for (const auto &entry : std::filesystem::directory_iterator(folder))
        entries.push_back(entry.path());
    std::sort(entries.begin(), entries.end());
    return entries;
}

void measureBracket(Study &study, const std::filesystem::path &folder) {
    std::vector<std::filesystem::path> files = sorted(folder);
    std::erase_if(files, [](const auto &path) { return path.extension() != ".jpg"; });
    if (files.size() != 3)
        return;
    Photographs photographs;
    if (const auto error = openPhotographs({files[0], files[1], files[2]}, photographs)) {
        std::fprintf(stderr, "%s %s\n", error->path.c_str(), error->reason.c_str());
        return;
    }
    IHDREngineController controller;
    if (!controller.convertImages(photographs))
        return;
    EngineInputs inputs = controller.inputOffscreen();
    const MergeRun run = merge(inputs);
    std::printf("  %-20s %4d x %-6d %8.2f   %d %d %d %10s\n", folder.filename().c_str(), inputs[0].i32Width,
                inputs[0].i32Height, 100 * run.markedShare(), run.info.excluded[0], run.info.excluded[1],
                run.info.excluded[2], study.bars.atMost(run.info.fallback, 0, 0).c_str());
}

} // namespace

void measurePhotographs(Study &study, const std::filesystem::path &folder) {
    std::printf("\nPhotographs, level %d\n  %-20s %-13s %8s %7s %10s\n", kDefaultLevel, "bracket", "size",
                "marked, %", "excluded", "fallback");
    for (const auto &entry : sorted(folder))
        if (std::filesystem::is_directory(entry))
            measureBracket(study, entry);
}

} // namespace tristop::quality
