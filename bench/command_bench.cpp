// SPDX-License-Identifier: GPL-3.0-or-later
// Time and peak memory of the whole command, beside libjpeg-turbo decoding the same three files.
//   command_bench COMMAND DARK MIDDLE BRIGHT OUT
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <vector>

#include <jpeglib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kRuns = 5;

double secondsOf(const std::function<void()> &work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void decode(const char *path) {
    FILE *file = std::fopen(path, "rb");
    if (!file)
        return;
    jpeg_decompress_struct reader;
    jpeg_error_mgr errors;
    reader.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&reader);
    jpeg_stdio_src(&reader, file);
    jpeg_read_header(&reader, TRUE);
    reader.out_color_space = JCS_EXT_BGRX;
    jpeg_start_decompress(&reader);
    std::vector<unsigned char> row(4 * static_cast<size_t>(reader.output_width));
    while (reader.output_scanline < reader.output_height) {
        JSAMPROW rows[] = {row.data()};
        jpeg_read_scanlines(&reader, rows, 1);
    }
    jpeg_finish_decompress(&reader);
    jpeg_destroy_decompress(&reader);
    std::fclose(file);
}

/// Runs a command and returns its peak memory in MiB, or a negative number when it failed.
double runCommand(char *const *arguments) {
    const pid_t child = fork();
    if (child == 0) {
        execv(arguments[0], arguments);
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? static_cast<double>(usage.ru_maxrss) / 1024 : -1;
}

void print(const char *what, std::vector<double> seconds) {
    std::sort(seconds.begin(), seconds.end());
    std::printf("%-34s %6.3f s  (fastest %.3f s)\n", what, seconds[seconds.size() / 2], seconds.front());
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 6) {
        std::fprintf(stderr, "usage: command_bench COMMAND DARK MIDDLE BRIGHT OUT\n");
        return 2;
    }
    char output[] = "--output";
    char *command[] = {argv[1], argv[2], argv[3], argv[4], output, argv[5], nullptr};
    std::vector<double> whole, decoding;
    double peak = 0;
    for (int run = 0; run < kRuns; run++) {
        whole.push_back(secondsOf([&] { peak = std::max(peak, runCommand(command)); }));
        decoding.push_back(secondsOf([&] { std::for_each(argv + 2, argv + 5, decode); }));
    }
    if (peak <= 0) {
        std::fprintf(stderr, "the command failed\n");
        return 1;
    }
    std::printf("Median of %d runs of %s, output %s\n", kRuns, argv[1], argv[5]);
    print("whole command", whole);
    print("libjpeg-turbo, three files in turn", decoding);
    std::printf("peak memory %.0f MiB\n", peak);
}
