// SPDX-License-Identifier: MIT
// Command lines, read by CLI11: help and version on standard output, wrong usage as a Failure, and
// options whose value is a number.
#pragma once

#include "common/failure.h"
#include "common/numbers.h"
#include "common/streams.h"

#include <CLI/CLI.hpp>

namespace tool {

// False when --help or --version was asked for and told, so that there is nothing left to do.
// Throws Failure.
inline bool ParseCommandLine(CLI::App &app, int argc, char **argv) {
    try {
        app.parse(argc, argv);
        return true;
    } catch (const CLI::CallForHelp &) {
        WriteOutput(app.help());
    } catch (const CLI::CallForVersion &version) {
        WriteOutput(version.what() + std::string("\n"));
    } catch (const CLI::ParseError &error) {
        throw Failure(kBadUsage, error.what() + std::string(" (--help tells more)"));
    }
    return false;
}

// The value may be an integer that holds least and most, or an optional one.
template <typename Integer>
CLI::Option *AddInteger(CLI::App &app, const std::string &names, Integer &value, int64_t least,
                        int64_t most, const std::string &help) {
    const std::string name = names.substr(names.rfind(',') + 1); // of "-s,--size" the long one
    const auto parse = [=, &value](const std::string &text) {
        value = static_cast<Integer>(IntegerBetween(name, text, least, most));
    };
    return app.add_option_function<std::string>(names, parse, help);
}

// The value may be a double or an optional one.
template <typename Real>
CLI::Option *AddReal(CLI::App &app, const std::string &name, Real &value, double least, double most,
                     const std::string &help) {
    const auto parse = [=, &value](const std::string &text) {
        value = RealBetween(name, text, least, most);
    };
    return app.add_option_function<std::string>(name, parse, help);
}

} // namespace tool
