// SPDX-License-Identifier: GPL-3.0-or-later
//
// tristop-quality: measures alignment and ghost removal on rendered scenes, whose truth is known, and prints
// one table. Exit status 1 when a limit is missed.
#include "tools/quality/study.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <iostream>

int main(int argc, char **argv) {
    using namespace tristop::quality;

    bool isQuick = false;
    std::filesystem::path cache = "build/quality", photographs;
    CLI::App app("Measures alignment and ghost removal on rendered scenes. What is above its limit is marked "
                 "with an exclamation mark.");
    app.add_flag("--quick", isQuick, "Only pictures of 3 megapixels");
    app.add_option("--cache", cache, "Folder for rendered views; may be deleted at any time")
        ->capture_default_str();
    app.add_option("--photographs", photographs, "Folder of folders with three photographs each")
        ->check(CLI::ExistingDirectory);
    CLI11_PARSE(app, argc, argv);

    std::setvbuf(stdout, nullptr, _IOLBF, 0); // a long measurement is worth watching
    try {
        Study study{ViewCache(cache / TRISTOP_RENDERER), {{"3 MP", {2124, 1416}, {60013, 60037, 60077}}}};
        if (!isQuick) {
            study.sizes.push_back({"12 MP", {4260, 2840}, {60103}});
            study.sizes.push_back({"24 MP", {6000, 4000}, {60127}});
        }
        measureAlignment(study);
        measureGhosts(study);
        measureStaticScenes(study);
        measureLevels(study);
        measureTime(study);
        if (!photographs.empty())
            measurePhotographs(study, photographs);
        std::printf("\n%d limits missed\n", study.bars.missed());
        return study.bars.missed() ? 1 : 0;
    } catch (const std::exception &error) {
        std::cerr << "tristop-quality: " << error.what() << '\n';
        return 2;
    }
}
