// SPDX-License-Identifier: MIT
// The wording that all messages share.
#include "messages.h"

#include <algorithm>

namespace overlay {

namespace {

constexpr size_t kMaxQuoted = 40; // of a wrong word: what is no script at all has very long ones

} // namespace

std::string Error::Message() const {
    return file + (line > 0 ? ":" + std::to_string(line) : "") +
           (column > 0 ? ":" + std::to_string(column) : "") + ": " + reason;
}

std::string Quoted(std::string_view word) {
    std::string shown(word.substr(0, kMaxQuoted));
    const auto isControl = [](unsigned char c) { return c < ' ' || c == 127; };
    std::replace_if(shown.begin(), shown.end(), isControl, '?');
    return "'" + shown + (word.size() > kMaxQuoted ? "...'" : "'");
}

std::string Found(std::string_view word) {
    return word.empty() ? "the end of the line" : Quoted(word);
}

} // namespace overlay
