// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command_line.h"

#include <cstdlib>

namespace tristop {

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

} // namespace tristop
