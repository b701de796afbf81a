// SPDX-License-Identifier: MIT
// Lines end at a line feed, a carriage return or both, words at blanks, strings at a double quote;
// a comment fills its line. UTF-8 is what the library reads as such: sequences of up to six bytes.
#include "words.h"

#include <algorithm>
#include <cmath>

namespace overlay {

namespace {

constexpr size_t kMaxErrors = 20;                           // of one file
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF"; // some editors begin UTF-8 with it
constexpr std::string_view kBlanks = " \t";

bool IsEmptyOrComment(std::string_view line) {
    const std::string_view word = NextWord(line);
    return word.empty() || word[0] == '#';
}

std::string_view TakeLine(std::string_view &content) {
    const std::string_view line = content.substr(0, content.find_first_of("\r\n"));
    content.remove_prefix(line.size());
    content.remove_prefix(content.substr(0, 2) == "\r\n" ? 2 : std::min<size_t>(1, content.size()));
    return line;
}

char Unescaped(char letter) {
    switch (letter) {
    case '"':
    case '\\':
        return letter;
    case 'n':
        return '\n';
    default:
        throw Failure("unknown escape " + Quoted(std::string("\\") + letter) + " in the string");
    }
}

bool IsContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// Zero ends a text, in whatever length it is written.
bool IsZero(std::string_view sequence) {
    const auto lead = static_cast<unsigned char>(sequence[0]);
    const auto isEmpty = [](char c) { return c == '\x80'; };
    return sequence.size() == 1 ? lead == 0
                                : (lead & 0x7F >> sequence.size()) == 0 &&
                                      std::all_of(sequence.begin() + 1, sequence.end(), isEmpty);
}

// The length of the sequence that a lead byte opens; 0 for a byte that can't lead one.
size_t Utf8Length(unsigned char lead) {
    if (lead < 0x80)
        return 1;
    if (lead < 0xC0 || lead >= 0xFE)
        return 0;
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF8 ? 4 : lead < 0xFC ? 5 : 6;
}

// In characters, as editors count them.
size_t ColumnOf(std::string_view line, const char *place) {
    return 1 + static_cast<size_t>(
                   std::count_if(line.data(), place, [](char c) { return !IsContinuation(c); }));
}

} // namespace

void ParseLines(std::string_view content, const std::string &file, Errors &errors,
                const std::function<void(std::string_view line, size_t number)> &parse) {
    if (content.substr(0, kByteOrderMark.size()) == kByteOrderMark)
        content.remove_prefix(kByteOrderMark.size());
    for (size_t number = 1; !content.empty() && errors.size() < kMaxErrors; ++number) {
        const std::string_view line = TakeLine(content);
        if (IsEmptyOrComment(line))
            continue;
        try {
            parse(line, number);
        } catch (const PlacedFailure &failure) {
            errors.push_back({file, number, failure.what(), ColumnOf(line, failure.place)});
        } catch (const Failure &failure) {
            errors.push_back({file, number, failure.what()});
        }
    }
    if (!content.empty() && errors.size() == kMaxErrors) // not told of another file before
        errors.push_back({file, 0, "too many errors, the rest is not checked"});
}

std::string_view WithoutBlanksBefore(std::string_view line) {
    return line.substr(std::min(line.find_first_not_of(kBlanks), line.size()));
}

std::string_view Trimmed(std::string_view text) {
    text = WithoutBlanksBefore(text);
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::string_view NextWord(std::string_view line) {
    line = WithoutBlanksBefore(line);
    return line.substr(0, line.find_first_of(kBlanks));
}

std::string_view TakeWord(std::string_view &line) {
    const std::string_view word = NextWord(line);
    line = WithoutBlanksBefore(line);
    line.remove_prefix(word.size());
    return word;
}

std::string_view TakeCharacter(std::string_view &text) {
    const auto end = std::find_if_not(text.begin() + 1, text.end(), IsContinuation);
    const std::string_view character = text.substr(0, static_cast<size_t>(end - text.begin()));
    text.remove_prefix(character.size());
    return character;
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

std::optional<double> RealOf(std::string_view word) {
    double value = 0;
    const char *end = word.data() + word.size();
    const auto result = std::from_chars(word.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::string TakeQuoted(std::string_view &line) {
    line = WithoutBlanksBefore(line);
    if (line.empty() || line[0] != '"')
        throw Failure("expected a string in double quotes, found " + Found(NextWord(line)));
    std::string text;
    for (size_t i = 1; i < line.size(); ++i) {
        if (line[i] == '"') {
            line.remove_prefix(i + 1);
            return text;
        }
        const bool escaped = line[i] == '\\' && i + 1 < line.size();
        text += escaped ? Unescaped(line[++i]) : line[i];
    }
    throw Failure("unterminated string");
}

const char *PlaceInQuoted(std::string_view quoted, size_t position) {
    size_t i = 1;
    for (; position > 0; --position)
        i += quoted[i] == '\\' ? 2 : 1;
    return quoted.data() + i;
}

bool IsDrawableUtf8(std::string_view text) {
    while (!text.empty()) {
        const size_t length = Utf8Length(static_cast<unsigned char>(text[0]));
        const std::string_view sequence = text.substr(0, length);
        if (length == 0 || sequence.size() < length || IsZero(sequence) ||
            !std::all_of(sequence.begin() + 1, sequence.end(), IsContinuation))
            return false;
        text.remove_prefix(length);
    }
    return true;
}

} // namespace overlay
