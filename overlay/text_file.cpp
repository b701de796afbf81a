// SPDX-License-Identifier: MIT
// What a file is shows from its status, so that a frame costs one look at it.
#include "text_file.h"

#include "file_change.h"
#include "resources.h"
#include "words.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace overlay {

namespace {

constexpr off_t kMaxBytes = 65536; // more than a frame shows

std::string WithoutCarriageReturns(std::string_view text) {
    std::string shown;
    for (size_t i = 0; i < text.size(); ++i)
        if (text[i] != '\r' || text.substr(i + 1, 1) != "\n")
            shown += text[i];
    if (!shown.empty() && shown.back() == '\n')
        shown.pop_back();
    return shown;
}

} // namespace

TextFile::TextFile(std::string ofPath) : path(std::move(ofPath)) {
    if (stat(path.c_str(), &seen) != 0)
        throw FileFailure(path, std::strerror(errno));
    Read();
}

// A pipe would be waited for, so it is not opened.
void TextFile::Read() {
    if (!S_ISREG(seen.st_mode))
        throw FileFailure(path, "is no regular file");
    if (seen.st_size > kMaxBytes)
        throw FileFailure(path, "has more than " + std::to_string(kMaxBytes) + " bytes");
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(path.c_str(), "rb"),
                                                                std::fclose);
    if (!file)
        throw FileFailure(path, std::strerror(errno));
    std::string bytes(static_cast<size_t>(kMaxBytes), '\0');
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
    if (std::ferror(file.get()))
        throw FileFailure(path, std::strerror(errno));
    if (!IsDrawableUtf8(bytes))
        throw FileFailure(path, "is not UTF-8");
    content = WithoutCarriageReturns(bytes);
}

const std::string &TextFile::Content() {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || !HasChanged(seen, status))
        return content;
    seen = status;
    try {
        Read();
    } catch (const FileFailure &) {
        // the text before stays
    }
    return content;
}

} // namespace overlay
