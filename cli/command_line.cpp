// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command_line.h"

#include <cstdlib>
#include <iostream>
#include <memory>
#include <utility>

namespace tristop {
namespace {

/// Help that begins with how the command is called.
class HelpFormatter final : public CLI::Formatter {
public:
    explicit HelpFormatter(std::string usage) : usage(std::move(usage)) { column_width(36); }

    std::string make_usage(const CLI::App *, std::string) const override { return "Usage: " + usage + "\n"; }

private:
    std::string usage;
};

/// The first argument that looks like an option and is none.
std::optional<std::string> unknownOption(const CLI::App &app) {
    for (const std::string &argument : app.remaining())
        if (argument.starts_with('-') && argument != "--")
            return argument;
    return std::nullopt;
}

} // namespace

void prepareCommandLine(CLI::App &app, const std::string &usage) {
    app.formatter(std::make_shared<HelpFormatter>(usage));
    app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
}

void addNumber(CLI::App &app, const std::string &name, int32_t &value, int32_t lowest, int32_t highest,
               const std::string &description) {
    const auto read = [=, &value](const std::string &text) {
        char *end = nullptr;
        const long long number = std::strtoll(text.c_str(), &end, 10);
        if (text.empty() || *end != '\0' || number < lowest || number > highest)
            throw CLI::ValidationError(name, "must be a whole number from " + std::to_string(lowest) +
                                                 " to " + std::to_string(highest) + ", not " + text);
        value = static_cast<int32_t>(number);
    };
    app.add_option_function<std::string>(name, read, description)
        ->type_name("number")
        ->option_text(std::to_string(lowest) + ".." + std::to_string(highest) + " (" + std::to_string(value) +
                      ")");
}

std::optional<ExitStatus> parseCommandLine(CLI::App &app, int argc, char **argv,
                                           const std::function<std::optional<std::string>()> &mistake) {
    // What else is wrong with a command line may follow from a misspelt option, which is named first.
    app.allow_extras();
    std::optional<std::string> wrong;
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        if (error.get_exit_code() == 0) {
            app.exit(error); // prints what was asked for
            return std::cout.flush() ? kSuccess : kCannotWrite;
        }
        wrong = error.what();
    }
    if (const auto unknown = unknownOption(app))
        wrong = "unknown option " + *unknown;
    else if (!wrong)
        wrong = mistake();
    if (!wrong)
        return std::nullopt;
    std::cerr << "tristop-cli: " << *wrong << '\n';
    return kBadUsage;
}

} // namespace tristop
