// SPDX-License-Identifier: GPL-3.0-or-later
// Runs the command as a user does: TRISTOP_CLI is the command, TRISTOP_FAULTY_CLI the same with an engine
// that fails on demand.
#include <array>
#include <csignal>
#include <filesystem>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/app/written_files.h"
#include "tests/cli/command_run.h"

namespace tristop::testing {
namespace {

class CliTest : public ::testing::Test {
protected:
    CliTest() : names{path("dark.jpg"), path("middle.jpg"), path("bright.jpg")} {
        for (size_t i = 0; i < names.size(); ++i)
            writeJpeg(names[i], wall(161, 120, static_cast<double>(1 << 2 * i)));
    }

    std::string path(const std::string &name) const { return folder.path(name); }

    Outcome run(const std::vector<std::string> &arguments, const std::string &program = TRISTOP_CLI,
                const std::string &setUp = "") const {
        return runCommand(folder, program, arguments, setUp);
    }

    /// The names that follow `mark` in a text.
    static std::set<std::string> longOptions(const std::string &text, const std::string &mark = "--") {
        const std::regex pattern(mark + "([a-z][a-z-]*)");
        std::set<std::string> names;
        for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match)
            names.insert((*match)[1]);
        return names;
    }

    /// Expects an error of one line on standard error, nothing on standard output and no picture.
    void expectError(const Outcome &outcome, int status, const std::string &message) {
        EXPECT_EQ(outcome.status, status) << outcome.err;
        EXPECT_EQ(outcome.err, "tristop-cli: " + message + "\n");
        EXPECT_EQ(outcome.out, "");
        EXPECT_FALSE(std::filesystem::exists(path("out.png")));
    }

    TemporaryFolder folder;
    std::array<std::string, 3> names;
};

TEST_F(CliTest, tellsAboutItself) {
    const Outcome help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_GT(longOptions(help.out).size(), 15u);
    EXPECT_TRUE(longOptions(help.out).contains("tiff-compression"));
    const Outcome version = run({"--version"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out.rfind("tristop-cli ", 0), 0u);
}

TEST_F(CliTest, documentsAndCompletesEachCommandsOptions) {
    using Options = std::set<std::string>;
    const Options merge = longOptions(run({"--help"}).out), batch = longOptions(run({"batch", "--help"}).out);
    const auto textOf = [](const std::string &name) {
        const auto bytes = readFile(TRISTOP_CLI_SOURCES + name);
        return std::string(bytes.begin(), bytes.end());
    };
    // The manual and the completion for zsh: what one command has, or both, and then what batch adds.
    std::string manual = textOf("/tristop-cli.1");
    std::erase(manual, '\\');
    manual.erase(0, manual.find(".SH OPTIONS"));
    const size_t batches = manual.find(".SH BATCHES");
    const Options ofMerge = longOptions(manual.substr(0, batches)),
                  added = longOptions(manual.substr(batches));
    EXPECT_EQ(ofMerge, merge);
    const auto united = [](Options one, const Options &other) {
        one.insert(other.begin(), other.end());
        return one;
    };
    const Options notOfBatch = {"version", "report", "json"};
    Options shared = ofMerge;
    for (const std::string &option : notOfBatch)
        EXPECT_EQ(shared.erase(option), 1u) << option;
    EXPECT_EQ(united(shared, added), batch);

    const std::string zsh = textOf("/completions/_tristop-cli");
    const size_t zshBatch = zsh.find("if [["), zshMerge = zsh.find("return\n");
    const Options zshBoth = longOptions(zsh.substr(0, zshBatch));
    EXPECT_EQ(united(zshBoth, longOptions(zsh.substr(zshBatch, zshMerge - zshBatch))), batch);
    EXPECT_EQ(united(zshBoth, longOptions(zsh.substr(zshMerge))), merge);

    const auto offeredByBash = [&](const std::string &command) {
        const std::string script =
            "source " TRISTOP_CLI_SOURCES "/completions/tristop-cli.bash; "
            "compopt() { :; }; COMP_WORDS=(" +
            command +
            " --); "
            "COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _tristop_cli; echo ${COMPREPLY[@]}";
        return longOptions(runCommand(folder, "bash", {"-c", script}).out);
    };
    EXPECT_EQ(offeredByBash("tristop-cli"), merge);
    EXPECT_EQ(offeredByBash("tristop-cli batch"), batch);

    Options fishMerge, fishBatch;
    std::istringstream fish(textOf("/completions/tristop-cli.fish"));
    for (std::string line; std::getline(fish, line);) {
        const Options option = longOptions(line, " -l ");
        if (line.find("-n 'not __fish_seen_subcommand_from batch'") == std::string::npos)
            fishBatch = united(fishBatch, option);
        if (line.find("-n '__fish_seen_subcommand_from batch'") == std::string::npos)
            fishMerge = united(fishMerge, option);
    }
    EXPECT_EQ(fishMerge, merge);
    EXPECT_EQ(fishBatch, batch);
}

TEST_F(CliTest, refusesBadUsage) {
    const auto &[dark, middle, bright] = names;
    const std::string out = path("out.png");
    const auto refused = [&](const std::vector<std::string> &more, const std::string &message) {
        std::vector<std::string> arguments = {dark, middle, bright, "-o", out};
        arguments.insert(arguments.end(), more.begin(), more.end());
        expectError(run(arguments), 2, message);
    };
    expectError(run({}), 2, "three photographs are needed, not 0");
    expectError(run({"--tone-lenght", "9", dark}), 2, "unknown option --tone-lenght");
    expectError(run({dark, middle, bright}), 2, "the picture to write is missing: name it with -o OUT");
    refused({dark}, "three photographs are needed, not 4");
    refused({"--ghost", "99", "--unknown"}, "unknown option --unknown");
    refused({"--tone-length", "101"}, "--tone-length: must be a whole number from 0 to 100, not 101");
    refused({"--brightness", "-101"}, "--brightness: must be a whole number from -100 to 100, not -101");
    refused({"--tone-saturation", "-1"}, "--tone-saturation: must be a whole number from 0 to 100, not -1");
    refused({"--ghost", "0x5"}, "--ghost: must be a whole number from 0 to 10, not 0x5");
    refused({"--ghost", "11"}, "--ghost: must be a whole number from 0 to 10, not 11");
    refused({"--contrast", "1.5"}, "--contrast: must be a whole number from -100 to 100, not 1.5");
    refused({"--saturation", "-101"}, "--saturation: must be a whole number from -100 to 100, not -101");
    refused({"--style", "sepia"}, "--style: must be original, art or bw, not sepia");
    refused({"--jpeg-quality", "101"}, "--jpeg-quality: must be a whole number from 0 to 100, not 101");
    refused({"--png-level", "10"}, "--png-level: must be a whole number from 0 to 9, not 10");
    refused({"--tiff-compression", "zip"},
            "--tiff-compression: must be none, lzw, packbits or deflate, not zip");
    refused({"--ghost"}, "--ghost: 1 required number missing");
    const std::string twice = ": is given twice; a merge takes three different photographs";
    expectError(run({dark, dark, dark, "-o", out}), 2, dark + twice);
    const std::string detour = path("./middle.jpg");
    expectError(run({middle, bright, detour, "-o", out}), 2, detour + twice);
    expectError(run({dark, middle, bright, "-o", path("out.bmp")}), 2,
                path("out.bmp") + ": its name must end in .png, .jpg, .jpeg, .tif or .tiff");
    expectError(run({dark, middle, bright, "-o", path("./dark.jpg")}), 2,
                path("./dark.jpg") + ": the result would overwrite one of the photographs");
    EXPECT_FALSE(readFile(dark).empty());
}

TEST_F(CliTest, namesThePhotographThatCannotBeUsed) {
    const auto &[dark, middle, bright] = names;
    const auto before = folder.names();
    const std::string odd = path("odd.jpg");
    const auto expectReason = [&](const std::string &reason) {
        expectError(run({dark, odd, bright, "-o", path("out.png")}), 3, odd + ": " + reason);
    };
    expectReason("does not exist");
    writeFile(odd, {});
    expectReason("is empty");
    writeFile(odd, {'n', 'o', 't', 'e', 's'});
    expectReason("is not a JPEG picture");
    auto bytes = readFile(middle);
    bytes.resize(bytes.size() / 2);
    writeFile(odd, bytes);
    expectReason("is truncated: it ends before its picture does");
    writeJpeg(odd, wall(160, 120, 4));
    expectReason("has another size than " + dark + ": 160 x 120 pixels instead of 161 x 120 pixels");
    writeJpeg(odd, wall(161, 99, 4));
    expectReason("is too small: 161 x 99 pixels, at least 100 x 100 are needed");
    std::filesystem::remove(odd);
    std::filesystem::create_directory(odd);
    expectReason("is a folder");
    std::filesystem::remove(odd);
    EXPECT_EQ(folder.names(), before) << "nothing is left behind";
}

TEST_F(CliTest, tellsWhenThePictureCannotBeWritten) {
    const auto &[dark, middle, bright] = names;
    const std::string nowhere = path("nowhere/out.png");
    expectError(run({dark, middle, bright, "-o", nowhere}), 5,
                nowhere + ": cannot be written: there is no folder " + path("nowhere"));
    std::filesystem::create_directory(path("folder.png"));
    expectError(run({dark, middle, bright, "-o", path("folder.png")}), 5,
                path("folder.png") + ": cannot be written: it is a folder");
    const std::string out = path("out.png");
    expectError(run({dark, middle, bright, "-o", out, "--ghost", "010"}, TRISTOP_CLI, "ulimit -f 8;"), 5,
                out + ": cannot be written: the file would be larger than is allowed here");
    const Outcome lost =
        run({dark, middle, bright, "-o", out, "--json"}, TRISTOP_CLI, "lost() { \"$@\" >/dev/full; }; lost");
    EXPECT_EQ(lost.status, 5);
    EXPECT_EQ(lost.err, "tristop-cli: the description cannot be written to standard output\n");
}

TEST_F(CliTest, leavesNothingBehindWhenASignalEndsIt) {
    const std::vector<std::string> arguments = {names[0], names[1], names[2], "-o", path("out.png")};
    const auto before = folder.names();
    EXPECT_EQ(run(arguments, TRISTOP_FAULTY_CLI, "TRISTOP_FAULT_SIGNAL=15").status, 128 + SIGTERM);
    EXPECT_EQ(folder.names(), before);
    EXPECT_EQ(run(arguments, TRISTOP_FAULTY_CLI, "trap '' HUP; TRISTOP_FAULT_SIGNAL=1").status, 0)
        << "as nohup runs it";
}

TEST_F(CliTest, saysInWordsWhyAMergeFailed) {
    const std::vector<std::pair<int, std::string>> reasons = {
        {2, "the pictures given to the engine are incomplete or do not fit together"},
        {3, "the engine does not handle this kind of picture"},
        {4, "there is not enough memory"},
        {5, "the photographs are too far apart to be merged"},
        {6, "it was cancelled"},
        {23, "the photographs could not be aligned: they share too few details"},
        {24, "the exposures are in the wrong order: the brightest is not the last"},
        {25, "it finished with a warning and gave no picture"},
        {99, "the engine reported the unknown status 99"},
    };
    const std::string out = path("out.png");
    for (const auto &[status, reason] : reasons) {
        const Outcome outcome = run({names[0], names[1], names[2], "-o", out, "--json"}, TRISTOP_FAULTY_CLI,
                                    "TRISTOP_FAULT_STATUS=" + std::to_string(status));
        EXPECT_EQ(outcome.status, 4);
        EXPECT_EQ(outcome.err, "tristop-cli: the merge failed: " + reason + "\n");
        EXPECT_FALSE(std::filesystem::exists(out));
        const auto json = nlohmann::json::parse(outcome.out);
        EXPECT_EQ(json["exitStatus"], 4);
        EXPECT_EQ(json["status"]["code"], status);
        EXPECT_EQ(json["status"]["reason"], reason);
        EXPECT_EQ(json["error"]["reason"], "the merge failed: " + reason);
    }
    const Outcome thrown = run({names[0], names[1], names[2], "-o", out, "--json"}, TRISTOP_FAULTY_CLI,
                               "TRISTOP_FAULT_THROWS=1");
    EXPECT_EQ(thrown.status, 4);
    EXPECT_EQ(nlohmann::json::parse(thrown.out)["error"]["reason"],
              "the merge failed: there is not enough memory");
}

TEST_F(CliTest, warnsOfASingleExposure) {
    const std::vector<std::string> arguments = {names[0], names[1], names[2], "-o", path("out.png")};
    const std::string environment = "TRISTOP_FAULT_FALLBACK=4";
    const Outcome outcome = run(arguments, TRISTOP_FAULTY_CLI, environment);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err,
              "tristop-cli: warning: the picture shows a single exposure: the dark exposure differs over "
              "too much of the picture\n");
    auto described = arguments;
    described.insert(described.end(), {"--json", "--quiet"});
    const Outcome quiet = run(described, TRISTOP_FAULTY_CLI, environment);
    EXPECT_EQ(quiet.err, "");
    EXPECT_EQ(nlohmann::json::parse(quiet.out)["fallback"]["code"], "dark-motion");
}

TEST_F(CliTest, mergesThreePhotographsInAnyOrderToTheSamePicture) {
    std::array<size_t, 3> order = {0, 1, 2};
    std::vector<uint8_t> first;
    do {
        const std::string out = path("out.png");
        const Outcome outcome = run(
            {names[order[0]], names[order[1]], names[order[2]], "-o", out, "--json", "--brightness", "-5"});
        ASSERT_EQ(outcome.status, 0) << outcome.err;
        const auto json = nlohmann::json::parse(outcome.out);
        EXPECT_EQ(json["size"]["width"], 161);
        EXPECT_EQ(json["size"]["height"], 120);
        EXPECT_EQ(json["status"]["code"], 0);
        EXPECT_LT(json["crop"]["x0"], json["crop"]["x1"]);
        EXPECT_FALSE(json.contains("error"));
        const std::array<std::string, 3> roles = {"dark", "middle", "bright"};
        for (size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(json["photographs"][i]["file"], names[order[i]]);
            EXPECT_EQ(json["photographs"][i]["role"], roles[order[i]]);
        }
        EXPECT_GT(json["milliseconds"]["total"], json["milliseconds"]["merge"]);
        EXPECT_EQ(json["milliseconds"]["steps"].size(), 10u);
        const TestPicture picture = readPng(out);
        EXPECT_EQ(picture.width, 161) << "not the width rounded up";
        EXPECT_EQ(picture.height, 120);
        const auto bytes = readFile(out);
        if (first.empty())
            first = bytes;
        EXPECT_EQ(bytes, first);
    } while (std::ranges::next_permutation(order).found);
}

TEST_F(CliTest, reportsHowAMergeCameAbout) {
    const std::string plain = path("plain.png"), out = path("out.png"), report = path("new/report");
    const auto merge = [&](const std::string &target, const std::vector<std::string> &more) {
        std::vector<std::string> arguments = {names[0], names[1], names[2], "-o", target};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run(arguments);
    };
    ASSERT_EQ(merge(plain, {}).status, 0);
    const Outcome outcome = merge(out, {"--report", report, "--json"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(readFile(out), readFile(plain)) << "the report changes nothing";
    const auto page = readFile(report + "/index.html");
    const std::string html(page.begin(), page.end());
    int pictures = 0;
    for (const auto &entry : std::filesystem::directory_iterator(report)) {
        const std::string name = entry.path().filename().string();
        if (entry.path().extension() != ".png") {
            EXPECT_TRUE(name == "index.html" || name == "report.txt" || name == "report.json") << name;
            continue;
        }
        ++pictures;
        EXPECT_NE(html.find("src=\"" + name + "\""), std::string::npos) << name;
        const TestPicture picture = readPng(entry.path().string());
        if (name.find("detail") == std::string::npos) {
            EXPECT_EQ(picture.width, 20 * 8) << name << ": an eighth, eight times";
            EXPECT_EQ(picture.height, 14 * 8) << name;
        }
    }
    EXPECT_EQ(pictures, 39);
    const auto text = readFile(report + "/report.txt");
    EXPECT_NE(std::string(text.begin(), text.end()).find("161 x 120"), std::string::npos);
    const auto told = nlohmann::json::parse(outcome.out),
               kept = nlohmann::json::parse(readFile(report + "/report.json"));
    for (const char *part : {"photographs", "fallback", "alignment", "ghosts"})
        EXPECT_EQ(told.at(part), kept.at(part));
    EXPECT_GE(kept["ghosts"]["markedPercent"], kept["ghosts"]["maskPercent"]["A"]);
    EXPECT_TRUE(kept["photographs"][0]["alignment"].contains("followingMatches"));
    EXPECT_EQ(merge(out, {"--report", report}).status, 0) << "into a folder that has one";

    const auto refused = [&](const std::string &folder, const std::string &message) {
        std::filesystem::remove(out);
        const Outcome lost = merge(out, {"--report", folder});
        EXPECT_EQ(lost.status, 5);
        EXPECT_EQ(lost.err, "tristop-cli: " + message + "\n");
        EXPECT_EQ(readFile(out), readFile(plain)) << "the picture is written nevertheless";
    };
    refused(plain, plain + ": cannot be written: Not a directory");
    std::filesystem::remove(report + "/ghosts.png");
    std::filesystem::create_directory(report + "/ghosts.png");
    refused(report, report + "/ghosts.png: cannot be written: it is a folder");
}

TEST_F(CliTest, writesEveryFormatWithTheMiddlePhotographsMetadata) {
    const auto &[dark, middle, bright] = names;
    addExif(dark, {{"Exif.Image.Make", "Dark"}});
    addExif(middle, {{"Exif.Image.Make", "Middle"}, {"Exif.GPSInfo.GPSLatitudeRef", "N"}});
    addExif(bright, {{"Exif.Image.Make", "Bright"}});
    const auto written = [&](const std::string &name, const std::vector<std::string> &more) {
        std::vector<std::string> arguments = {bright, dark, middle, "-o", path(name)};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        return path(name);
    };
    for (const char *name : {"out.png", "out.jpg", "out.tif"}) {
        const auto exif = readExif(written(name, {}));
        EXPECT_EQ(exif.at("Exif.Image.Make"), "Middle");
        EXPECT_EQ(exif.at("Exif.Photo.PixelXDimension"), "161");
        EXPECT_TRUE(exif.contains("Exif.GPSInfo.GPSLatitudeRef"));
        EXPECT_FALSE(readExif(written(name, {"--no-gps"})).contains("Exif.GPSInfo.GPSLatitudeRef"));
        EXPECT_FALSE(readExif(written(name, {"--no-metadata"})).contains("Exif.Photo.PixelXDimension"));
    }
    EXPECT_EQ(readPng(written("out.png", {"--keep-width", "--png-level", "0"})).width, 164);
    EXPECT_GT(readFile(path("out.png")).size(), 3u * 164 * 120);
    const TestTiff tiff = readTiff(written("out.tif", {"--tiff-compression", "packbits"}));
    EXPECT_EQ(tiff.pages[0].width, 161);
    EXPECT_EQ(tiff.pages[0].samples, readPng(written("same.png", {})).samples);
    EXPECT_EQ(tiff.compression, 32773);
    EXPECT_EQ(readJpegHeader(written("out.jpg", {})).sampling, 1);
    EXPECT_EQ(readJpegHeader(written("out.jpg", {"--jpeg-quality", "89"})).sampling, 2);
}

TEST_F(CliTest, appliesTheColourEffect) {
    const auto picture = [this](const std::vector<std::string> &effect) {
        std::vector<std::string> arguments = {names[0], names[1], names[2], "-o", path("out.png")};
        arguments.insert(arguments.end(), effect.begin(), effect.end());
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.err;
        EXPECT_EQ(outcome.out + outcome.err, "") << "quiet when all is well";
        return readPng(path("out.png"));
    };
    const TestPicture original = picture({}), art = picture({"--style", "art"}),
                      grey = picture({"--style", "bw"});
    const TestPicture saturated = picture({"--contrast", "30", "--saturation", "50"});
    for (int i = 0; i < 120; i += 7) {
        const auto [r, g, b] = original.at(i, i);
        const auto luminance = static_cast<uint8_t>((601 * g + 306 * r + 117 * b) >> 10);
        EXPECT_EQ(grey.at(i, i), (Rgb{luminance, luminance, luminance}));
    }
    EXPECT_NE(art.samples, original.samples);
    EXPECT_NE(saturated.samples, original.samples);
}

} // namespace
} // namespace tristop::testing
