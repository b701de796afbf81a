// SPDX-License-Identifier: MIT
#include "class_names.h"

#include "words.h"

#include <algorithm>

namespace overlay {

ClassNames ParseClassNames(std::string_view content, const std::string &file, Errors &errors) {
    ClassNames names;
    int64_t next = 0;
    ParseLines(content, file, errors, [&](std::string_view line, size_t) {
        const size_t colon = std::min(line.find(':'), line.size());
        const std::string_view number = Trimmed(line.substr(0, colon));
        const bool numbered = colon < line.size() && !number.empty() &&
                              std::all_of(number.begin(), number.end(), IsDigit);
        if (numbered)
            next = ParseNumber<uint32_t>(number, "class");
        const std::string_view name = Trimmed(numbered ? line.substr(colon + 1) : line);
        if (!IsDrawableUtf8(name))
            throw Failure("the name of the class is not UTF-8");
        names[next++] = name;
    });
    return names;
}

std::string NameOfClass(const ClassNames &names, int64_t number) {
    const auto found = names.find(number);
    return found == names.end() ? std::to_string(number) : found->second;
}

} // namespace overlay
