// SPDX-License-Identifier: GPL-3.0-or-later
// Runs `tristop-cli batch` on a folder of brackets, also while it is interrupted.
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/app/written_files.h"
#include "tests/cli/command_run.h"

namespace tristop::testing {
namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

constexpr int kBrackets = 60;

/// Two cameras of one model in turns, every third bracket of each as camera RAW files: sixty whole brackets,
/// two that lack a photograph, a file whose header is sound and whose picture is not, one that is no picture,
/// and a text.
class BatchTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        shoot = new TemporaryFolder;
        const std::array<std::string, 3> exposures = {shoot->path("middle"), shoot->path("dark"),
                                                      shoot->path("bright")};
        for (size_t i = 0; i < 3; ++i) {
            const TestPicture picture = wall(160, 120, std::array{4.0, 1.0, 16.0}[i]);
            writeJpeg(exposures[i] + ".JPG", picture);
            writeDng(exposures[i] + ".DNG", picture);
        }
        fs::create_directory(shoot->path("card"));
        for (int bracket = 0; bracket < kBrackets + 2; ++bracket)
            for (int i = 0; i < (bracket < kBrackets ? 3 : 2); ++i)
                takePhotograph(exposures[static_cast<size_t>(i)], bracket, i);
        auto broken = readFile(photograph(kBrackets - 1, 2));
        broken.resize(broken.size() - broken.size() / 4);
        writeFile(photograph(kBrackets - 1, 2), broken);
        writeFile(shoot->path("card/IMG_9999.JPG"), {'n', 'o'});
        writeFile(shoot->path("card/notes.txt"), {'n', 'o'});
    }
    static void TearDownTestSuite() { delete shoot; }

    static std::string suffix(int bracket) { return bracket / 2 % 3 == 0 ? ".DNG" : ".JPG"; }

    /// Cameras A and B take their brackets at the same time, so that the names of their files alternate.
    static std::string photograph(int bracket, int number) {
        const int position = (bracket / 2 * 3 + number) * 2 + bracket % 2;
        return shoot->path("card/IMG_" + std::to_string(1000 + position) + suffix(bracket));
    }

    static std::string resultOf(int bracket) {
        return fs::path(photograph(bracket, 0)).stem().string() + "-hdr.jpg";
    }

    static void takePhotograph(const std::string &exposure, int bracket, int number) {
        const std::string path = photograph(bracket, number);
        fs::copy_file(exposure + suffix(bracket), path);
        const int tenths = bracket / 2 * 400 + number * 3 + bracket % 2;
        std::array<char, 32> time{};
        std::snprintf(time.data(), time.size(), "2024:05:31 18:%02d:%02d", tenths / 600, tenths / 10 % 60);
        addExif(path, {{"Exif.Image.Make", "Maker"},
                       {"Exif.Image.Model", "One"},
                       {"Exif.Photo.BodySerialNumber", std::to_string(bracket % 2)},
                       {"Exif.Photo.DateTimeOriginal", time.data()},
                       {"Exif.Photo.SubSecTimeOriginal", std::to_string(tenths % 10)},
                       {"Exif.Photo.ExposureTime",
                        std::array{"1/60", "1/240", "1/15"}[static_cast<size_t>(number)]},
                       {"Exif.Photo.ExposureBiasValue",
                        std::array{"0/1", "-2/1", "2/1"}[static_cast<size_t>(number)]}});
    }

    std::string path(const std::string &name) const { return folder.path(name); }

    Outcome run(Arguments arguments, const std::string &program = TRISTOP_CLI,
                const std::string &setUp = "") const {
        arguments.insert(arguments.begin(), "batch");
        return runCommand(folder, program, arguments, setUp);
    }

    void writePlan() const {
        ASSERT_EQ(
            run({shoot->path("card"), "-o", path("out"), "--plan", path("plan.json"), "--quiet"}).status, 0);
    }

    /// Starts the command on its own and ends it by `signal` after some milliseconds. Gives how it ended.
    static int interrupt(const Arguments &arguments, int signal, int milliseconds) {
        std::vector<char *> words;
        const std::string program = TRISTOP_CLI, batch = "batch";
        for (const std::string *word : {&program, &batch})
            words.push_back(const_cast<char *>(word->c_str()));
        for (const std::string &argument : arguments)
            words.push_back(const_cast<char *>(argument.c_str()));
        words.push_back(nullptr);
        const pid_t child = ::fork();
        if (child == 0) {
            const int nowhere = ::open("/dev/null", O_WRONLY);
            ::dup2(nowhere, STDOUT_FILENO);
            ::dup2(nowhere, STDERR_FILENO);
            ::execv(words[0], words.data());
            ::_exit(127);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        ::kill(child, signal);
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }

    /// When each whole result was written; anything else in the folder is a failure.
    std::map<std::string, fs::file_time_type> results() const {
        std::map<std::string, fs::file_time_type> times;
        if (!fs::exists(path("out")))
            return times;
        for (const auto &entry : fs::directory_iterator(path("out"))) {
            const auto bytes = readFile(entry.path().string());
            const bool whole = bytes.size() > 100 && bytes[0] == 0xff && bytes[bytes.size() - 2] == 0xff &&
                               bytes.back() == 0xd9;
            EXPECT_TRUE(whole) << entry.path();
            EXPECT_EQ(entry.path().extension(), ".jpg") << entry.path();
            times[entry.path().filename()] = entry.last_write_time();
        }
        return times;
    }

    /// Outcomes of a log's lines, by output file.
    std::map<std::string, std::vector<std::string>> logged(const std::string &log) const {
        std::map<std::string, std::vector<std::string>> outcomes;
        std::ifstream lines(log);
        for (std::string line; std::getline(lines, line);) {
            const auto json = nlohmann::json::parse(line);
            outcomes[fs::path(std::string(json["merge"]["output"])).filename()].push_back(json["outcome"]);
        }
        return outcomes;
    }

    static TemporaryFolder *shoot;
    TemporaryFolder folder;
};

TemporaryFolder *BatchTest::shoot = nullptr;

TEST_F(BatchTest, showsWhatItWouldDo) {
    const Outcome outcome = run({shoot->path("card"), "-o", path("out"), "--dry-run"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("\n60 brackets, 5 unused photographs\n"), std::string::npos) << outcome.out;
    for (int bracket = 0; bracket < kBrackets; ++bracket) {
        const std::string line = photograph(bracket, 1) + ' ' + photograph(bracket, 0) + ' ' +
                                 photograph(bracket, 2) + " -> " + path("out/" + resultOf(bracket)) + '\n';
        EXPECT_NE(outcome.out.find(line), std::string::npos) << line;
    }
    EXPECT_NE(outcome.out.find("IMG_9999.JPG: is no photograph that can be read\n"), std::string::npos);
    EXPECT_NE(outcome.out.find(photograph(kBrackets, 0) + ": only two photographs of a bracket are there\n"),
              std::string::npos);
    EXPECT_FALSE(fs::exists(path("out")));
}

TEST_F(BatchTest, mergesAFolderAndThenOnlyWhatIsNew) {
    const Arguments arguments = {shoot->path("card"), "-o",      path("out"), "--jobs", "4", "--log",
                                 path("log"),         "--style", "bw"};
    const Outcome first = run(arguments);
    EXPECT_EQ(first.status, 6);
    const std::string broken = path("out/" + resultOf(kBrackets - 1));
    EXPECT_NE(first.err.find("tristop-cli: " + broken + " was not made: " + photograph(kBrackets - 1, 2) +
                             ": is truncated: it ends before its picture does\n"),
              std::string::npos)
        << first.err;
    EXPECT_NE(first.err.find("60 brackets: 59 merged, 0 already done, 1 failed, in "), std::string::npos);
    EXPECT_EQ(results().size(), 59u);
    std::istringstream lines(first.out);
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        EXPECT_EQ(line.find(std::to_string(count + 1) + "/60] "), count < 9 ? 2u : 1u) << line;
        EXPECT_NE(line.find("-hdr.jpg: "), std::string::npos) << line;
    }
    EXPECT_EQ(count, 60);
    const auto log = logged(path("log"));
    EXPECT_EQ(log.size(), 60u);
    EXPECT_EQ(log.at(fs::path(broken).filename()), std::vector<std::string>{"failed"});

    // The same picture as that of the plain command, of RAW files and of JPEG files.
    for (const int bracket : {7, 8}) {
        ASSERT_EQ(runCommand(folder, TRISTOP_CLI,
                             {photograph(bracket, 0), photograph(bracket, 1), photograph(bracket, 2), "-o",
                              path("alone.jpg"), "--style", "bw"})
                      .status,
                  0);
        EXPECT_EQ(readFile(path("alone.jpg")), readFile(path("out/" + resultOf(bracket))));
    }

    auto before = results();
    const std::string removed = before.begin()->first, outdated = std::next(before.begin())->first;
    fs::remove(path("out/" + removed));
    fs::last_write_time(path("out/" + outdated),
                        fs::last_write_time(photograph(0, 0)) - std::chrono::hours(1));
    const Outcome second = run(arguments);
    EXPECT_NE(second.err.find("60 brackets: 2 merged, 57 already done, 1 failed, in "), std::string::npos)
        << second.err;
    auto after = results();
    for (const std::string &redone : {removed, outdated}) {
        before.erase(redone);
        EXPECT_EQ(after.erase(redone), 1u);
    }
    EXPECT_EQ(after, before);
}

TEST_F(BatchTest, writesAsThePlanSays) {
    ASSERT_EQ(run({photograph(0, 0), photograph(0, 1), photograph(0, 2), "-o", path("out"), "--name", "a.tif",
                   "--tiff-compression", "deflate", "--no-gps", "--plan", path("plan.json")})
                  .status,
              0);
    ASSERT_EQ(run({"--run", path("plan.json")}).status, 0);
    ASSERT_EQ(runCommand(folder, TRISTOP_CLI,
                         {photograph(0, 0), photograph(0, 1), photograph(0, 2), "-o", path("alone.tif"),
                          "--tiff-compression", "deflate", "--no-gps"})
                  .status,
              0);
    EXPECT_EQ(readFile(path("out/a.tif")), readFile(path("alone.tif")));
    EXPECT_EQ(readTiff(path("out/a.tif")).compression, 8) << "Adobe's deflate";
    EXPECT_EQ(readExif(path("out/a.tif")).at("Exif.Photo.ExposureTime"), "1/60");
}

TEST_F(BatchTest, completesWhatWasInterrupted) {
    writePlan();
    const Arguments arguments = {"--run", path("plan.json"), "--jobs", "2"};
    std::map<std::string, fs::file_time_type> before;
    int interruptions = 0;
    for (const int signal : {SIGKILL, SIGINT, SIGTERM, SIGKILL, SIGINT}) {
        const int status = interrupt(arguments, signal, 60 + 50 * interruptions);
        interruptions += status == 128 + signal;
        const auto now = results();
        for (const auto &[name, time] : before)
            EXPECT_EQ(now.at(name), time) << name << " is done again";
        before = now;
    }
    EXPECT_GT(interruptions, 0);
    EXPECT_EQ(run(arguments).status, 6) << "for the broken photograph";
    const auto now = results();
    EXPECT_EQ(now.size(), 59u);
    for (const auto &[name, time] : before)
        EXPECT_EQ(now.at(name), time) << name << " is done again";
}

TEST_F(BatchTest, isSpreadByGnuParallel) {
    writePlan();
    const Arguments part = {"--run", path("plan.json"), "--select",    "1/2", "--jobs",
                            "1",     "--log",           path("killed")};
    interrupt(part, SIGKILL, 300);
    const std::string command = "parallel --will-cite -j 2 '" TRISTOP_CLI " batch --run " +
                                path("plan.json") + " --select {}/2 --jobs 1 --quiet --log " + path("log") +
                                "' ::: 1 2 2>/dev/null";
    const int failedParts = WEXITSTATUS(std::system(command.c_str()));
    EXPECT_EQ(failedParts, 1) << "the part with the broken photograph";
    EXPECT_EQ(results().size(), 59u);
    auto outcomes = logged(path("log"));
    EXPECT_EQ(outcomes.size(), 60u);
    size_t done = 0;
    for (const auto &[name, outcome] : outcomes) {
        EXPECT_EQ(outcome.size(), 1u) << name << " is in both parts";
        done += outcome[0] == "done";
    }
    size_t doneBefore = 0;
    for (const auto &[name, outcome] : logged(path("killed"))) {
        EXPECT_EQ(outcomes.at(name)[0], "done") << name << " is done twice";
        ++doneBefore;
    }
    EXPECT_LE(done - doneBefore, 1u) << "at most the one whose line was not written any more";
}

TEST_F(BatchTest, cancelsARunningMergeThroughTheEngine) {
    writePlan();
    const Outcome outcome =
        run({"--run", path("plan.json"), "--jobs", "1"}, TRISTOP_FAULTY_CLI, "TRISTOP_FAULT_INTERRUPT=1");
    EXPECT_EQ(outcome.status, 128 + SIGINT);
    EXPECT_NE(outcome.err.find("60 brackets: 0 merged, 0 already done, 0 failed, 60 left, in "),
              std::string::npos)
        << outcome.err;
    EXPECT_TRUE(results().empty());
}

TEST_F(BatchTest, refusesBadUsage) {
    const std::string card = shoot->path("card"), out = path("out");
    const auto refused = [&](const Arguments &arguments, int status, const std::string &message) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.status, status);
        EXPECT_EQ(outcome.err, "tristop-cli: " + message + "\n");
    };
    refused({}, 2, "there is nothing to look for brackets in: name folders or photographs");
    refused({card}, 2, "the folder for the results is missing: name it with -o DIR");
    refused({card, "-o", card + "/."}, 2, card + "/.: the results need a folder of their own");
    refused({card, "-o", out, "--select", "1/2"}, 2, "--select goes with --run");
    refused({card, "--run", path("plan.json")}, 2,
            "inputs is for planning; --run takes everything from its plan");
    refused({"--run", path("plan.json"), "--ghost", "3"}, 2,
            "--ghost is for planning; --run takes everything from its plan");
    refused({"--select", "3/2"}, 2, "--select: must be I/N with I from 1 to N, not 3/2");
    refused({"--memory", "lots"}, 2, "--memory: must be a size such as 800M or 4G, not lots");
    refused({"--group", "5"}, 2, "--group: must be 3: a bracket is three photographs, not 5");
    refused({"--gap", "-1"}, 2, "--gap: must be a number of seconds up to a day, not -1");
    refused({card, "-o", out, "--name", "{last}.png"}, 2,
            "--name: in braces may stand first, middle, date or n, not {last}.png");
    refused({path("none"), "-o", out}, 3, path("none") + ": does not exist");
    refused({"--run", path("none")}, 3, path("none") + ": cannot be read: No such file or directory");
    fs::create_directory(path("empty"));
    refused({path("empty"), "-o", out}, 3, "no bracket was found among 0 photographs");
    const auto before = readFile(photograph(0, 0));
    for (const char *option : {"--plan", "--log"})
        for (const std::string &file : {photograph(0, 0), photograph(kBrackets, 0)})
            refused({card, "-o", out, option, file}, 2, file + ": would overwrite one of the photographs");
    EXPECT_EQ(readFile(photograph(0, 0)), before);
    writePlan();
    refused({"--run", path("plan.json"), "--log", path("plan.json")}, 2,
            path("plan.json") + ": is the plan itself");
    const Outcome unseen =
        run({card, "-o", out, "--dry-run"}, TRISTOP_CLI, "lost() { \"$@\" >/dev/full; }; lost");
    EXPECT_EQ(unseen.status, 5);
    EXPECT_EQ(unseen.err, "tristop-cli: the plan cannot be written to standard output\n");
    writeFile(out, {});
    const Outcome blocked = run({photograph(0, 0), photograph(0, 1), photograph(0, 2), "-o", out, "--quiet"});
    EXPECT_EQ(blocked.status, 6);
    EXPECT_NE(blocked.err.find("cannot be written: "), std::string::npos);
}

} // namespace
} // namespace tristop::testing
