// SPDX-License-Identifier: MIT
#include "control.h"

#include "words.h"

namespace overlay {

namespace {

constexpr size_t kMaxName = 64; // bytes: names are kept as long as their overlays

} // namespace

ControlLine ParseControlLine(std::string_view line) {
    const std::string_view command = TakeWord(line);
    if (command != "set" && command != "clear")
        throw PlacedFailure("unknown command " + Quoted(command) +
                                ": expected set NAME LINE, or clear NAME",
                            command.data());
    const std::string_view name = TakeWord(line);
    if (name.empty())
        throw Failure("expected a name after " + Quoted(command));
    if (name.size() > kMaxName)
        throw PlacedFailure("the name has more than " + std::to_string(kMaxName) + " bytes",
                            name.data());
    const std::string_view rest = Trimmed(line);
    if (command == "set" && rest.empty())
        throw Failure("expected a line of a script after the name");
    if (command == "clear" && !rest.empty())
        throw PlacedFailure("unexpected " + Quoted(NextWord(rest)) + " after the name",
                            rest.data());
    if (command == "clear")
        return {name, std::nullopt};
    return {name, rest};
}

} // namespace overlay
