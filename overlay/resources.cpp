// SPDX-License-Identifier: MIT
// Every failure names the file and the reason: the system's, or what is wrong with the content.
#include "resources.h"

#include <cerrno>
#include <cstring>
#include <system_error>

namespace overlay {

namespace {

FileFailure SystemFailure(const std::string &path) {
    return FileFailure(path, std::strerror(errno));
}

std::string ReadFile(const std::string &path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(path.c_str(), "rb"),
                                                                std::fclose);
    std::string content;
    char part[65536];
    while (const size_t count = file ? std::fread(part, 1, sizeof part, file.get()) : 0)
        content.append(part, count);
    if (!file || std::ferror(file.get()))
        throw SystemFailure(path);
    return content;
}

// Throws FileFailure unless the file holds whole frames, and one at least.
int64_t CountFrames(const std::string &path, size_t frameBytes) {
    std::error_code ignored;
    const bool regular = std::filesystem::is_regular_file(path, ignored);
    const uintmax_t bytes = regular ? std::filesystem::file_size(path, ignored) : 0;
    if (bytes == 0 || bytes % frameBytes != 0)
        throw FileFailure(path, "its " + std::to_string(bytes) + " bytes are no whole frames of " +
                                    std::to_string(frameBytes));
    return static_cast<int64_t>(bytes / frameBytes);
}

} // namespace

Font FontStore::Get(const std::string &path, int32_t direction) {
    Font &font = fonts[{path, direction}];
    if (font)
        return font;
    ReadFile(path); // for its reason: the library gives none
    font.reset(OrnMinRenderLoadCbfFont(path.c_str()), OrnMinRenderDestroyFont);
    if (!font)
        throw FileFailure(path, "not a CBF font, or cut short (cbfdump --check tells more)");
    OrnMinRenderSetFontDirection(font.get(), direction);
    return font;
}

Bitmap LoadBitmap(const std::string &path) {
    const std::string content = ReadFile(path);
    try {
        return ParsePbm(content);
    } catch (const Failure &failure) {
        throw FileFailure(path, failure.what());
    }
}

Picture::Picture(std::string name, int32_t width, int32_t height)
    : path(std::move(name)), file(nullptr, std::fclose) {
    shape.width = width;
    shape.height = height;
}

void Picture::Open(bool hasChroma) {
    if (frame && shape.hasChroma == hasChroma)
        return;
    frame.reset();
    shown = -1;
    next = 0;
    shape.hasChroma = hasChroma;
    file.reset(std::fopen(path.c_str(), "rb"));
    if (!file)
        throw SystemFailure(path);
    count = CountFrames(path, RawLayout(shape).Bytes());
    frame.emplace(shape); // no sooner: the file shows that the size is not just claimed
    image = frame->Image();
}

// Going on to the next frame seeks nothing: that would drop what was read ahead.
void Picture::Read(int64_t index) {
    const RawLayout layout(shape);
    errno = 0; // stays so at the end of the file
    if (index != next &&
        fseeko(file.get(), static_cast<off_t>(index) * static_cast<off_t>(layout.Bytes()),
               SEEK_SET) != 0)
        throw SystemFailure(path);
    next = -1; // when reading fails half way
    shown = -1;
    const size_t bytes = frame->Transfer(layout, [this](uint8_t *row, size_t rowBytes) {
        return std::fread(row, 1, rowBytes, file.get());
    });
    if (bytes < layout.Bytes())
        throw FileFailure(path, errno != 0 ? std::strerror(errno) : "it has become shorter");
    next = index + 1;
    shown = index;
}

const OrnMinRenderImage *Picture::FrameAt(int64_t index) {
    if (!frame)
        return nullptr;
    index %= count;
    if (index != shown)
        Read(index);
    return &image;
}

} // namespace overlay
