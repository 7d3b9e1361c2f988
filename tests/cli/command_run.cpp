// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/cli/command_run.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>

#include <sys/wait.h>

namespace tristop::testing {

Outcome runCommand(const TemporaryFolder &folder, const std::string &program,
                   const std::vector<std::string> &arguments, const std::string &setUp) {
    const std::string outFile = folder.path("stdout"), errFile = folder.path("stderr");
    std::string command = setUp + " '" + program + "'";
    for (const std::string &argument : arguments)
        command += " '" + argument + "'";
    command += " >'" + outFile + "' 2>'" + errFile + "'";
    const int result = std::system(command.c_str());
    const auto text = [](const std::string &file) {
        const auto bytes = readFile(file);
        return std::string(bytes.begin(), bytes.end());
    };
    Outcome outcome{WIFEXITED(result) ? WEXITSTATUS(result) : 128 + WTERMSIG(result), text(outFile),
                    text(errFile)};
    std::filesystem::remove(outFile);
    std::filesystem::remove(errFile);
    return outcome;
}

TestPicture wall(int width, int height, double exposure) {
    TestPicture picture(width, height);
    uint32_t state = 9;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            state = state * 1664525 + 1013904223;
            const double pattern = 1 + 0.4 * std::sin(x * 0.21 + y * 0.07) * std::sin(y * 0.17) +
                                   0.1 * static_cast<double>(state >> 24) / 255;
            const double light = pattern * (x > width / 2 && y < height / 2 ? 0.2 : 0.01) * exposure;
            const double value = 255 * std::min(1.0, std::pow(light, 1 / 2.2));
            picture.set(x, y,
                        {static_cast<uint8_t>(value), static_cast<uint8_t>(value * 0.9),
                         static_cast<uint8_t>(value * 0.7)});
        }
    return picture;
}

} // namespace tristop::testing
