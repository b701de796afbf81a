#include "overlay_words.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace {

constexpr size_t kMaxErrors = 20;
constexpr size_t kMaxQuoted = 40; // of a wrong word: what is no script at all has very long ones
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF"; // some editors begin UTF-8 with it
constexpr std::string_view kBlanks = " \t\r"; // the last one: lines may end as on Windows

bool IsEmptyOrComment(std::string_view line) {
    const std::string_view word = NextWord(line);
    return word.empty() || word[0] == '#';
}

std::string_view TakeLine(std::string_view &content) {
    const std::string_view line = content.substr(0, content.find('\n'));
    content.remove_prefix(std::min(line.size() + 1, content.size()));
    return line;
}

} // namespace

void ParseLines(std::string_view content, FileErrors &errors,
                const std::function<void(std::string_view line)> &parse) {
    if (content.substr(0, kByteOrderMark.size()) == kByteOrderMark)
        content.remove_prefix(kByteOrderMark.size());
    for (size_t lineNumber = 1; !content.empty() && errors.complete; ++lineNumber) {
        const std::string_view line = TakeLine(content);
        if (IsEmptyOrComment(line))
            continue;
        try {
            parse(line);
        } catch (const Failure &error) {
            errors.list.push_back({lineNumber, error.what()});
            errors.complete = errors.list.size() < kMaxErrors;
        }
    }
}

Failure FileFailure(const std::string &path) {
    return Failure(path + ": " + std::strerror(errno));
}

std::string ReadFile(const std::string &path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(path.c_str(), "rb"),
                                                                std::fclose);
    std::string content;
    char part[65536];
    while (const size_t count = file ? std::fread(part, 1, sizeof part, file.get()) : 0)
        content.append(part, count);
    if (!file || std::ferror(file.get()))
        throw FileFailure(path);
    return content;
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

std::string_view WithoutBlanksBefore(std::string_view line) {
    return line.substr(std::min(line.find_first_not_of(kBlanks), line.size()));
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

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
