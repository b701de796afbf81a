// SPDX-License-Identifier: MIT
// The wording that all messages share.
#include "messages.h"

#include <algorithm>

namespace overlay {

namespace {

constexpr size_t kMaxQuoted = 40; // of a wrong word: what is no script at all has very long ones

bool IsContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// The bytes of the control character that the text begins with; 0 when it is none. Those from
// U+0080 to U+009F command some terminals, too.
size_t ControlLength(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < ' ' || first == 127)
        return 1;
    const auto second = static_cast<unsigned char>(text.size() > 1 ? text[1] : 0);
    return first == 0xC2 && second >= 0x80 && second < 0xA0 ? 2 : 0;
}

} // namespace

std::string Error::Message() const {
    return file + (line > 0 ? ":" + std::to_string(line) : "") +
           (column > 0 ? ":" + std::to_string(column) : "") + ": " + reason;
}

std::string Quoted(std::string_view word) {
    size_t end = std::min(word.size(), kMaxQuoted);
    while (end > 0 && end < word.size() && IsContinuation(word[end])) // no half characters
        --end;
    std::string shown;
    for (size_t i = 0; i < end;) {
        const size_t control = ControlLength(word.substr(i));
        shown += control > 0 ? '?' : word[i];
        i += std::max<size_t>(control, 1);
    }
    return "'" + shown + (end < word.size() ? "...'" : "'");
}

std::string Found(std::string_view word) {
    return word.empty() ? "the end of the line" : Quoted(word);
}

} // namespace overlay
