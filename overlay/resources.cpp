// SPDX-License-Identifier: MIT
// Every failure names the file and the reason: the system's, or what is wrong with the content.
#include "resources.h"

#include <cerrno>
#include <cstring>
#include <new>
#include <system_error>

namespace overlay {

namespace {

FileFailure SystemFailure(const std::string &path) {
    return FileFailure(path, std::strerror(errno));
}

using File = std::unique_ptr<std::FILE, int (*)(std::FILE *)>;

// The largest picture of raw pixels has half as much, and some files have no end.
constexpr size_t kMaxBitmapBytes = size_t{1} << 28;
constexpr size_t kMaxStillBytes = size_t{1} << 26;

// Reads no more than the parts of maxBytes. Throws FileFailure when the file can't be read.
std::string ReadStart(const std::string &path, size_t maxBytes) {
    const File file(std::fopen(path.c_str(), "rb"), std::fclose);
    std::string content;
    char part[65536];
    size_t count = file ? sizeof part : 0;
    while (count == sizeof part && content.size() < maxBytes) {
        count = std::fread(part, 1, sizeof part, file.get());
        content.append(part, count);
    }
    if (!file || std::ferror(file.get()))
        throw SystemFailure(path);
    return content;
}

// The whole file. Throws FileFailure, also when it has more than maxBytes.
std::string ReadLimited(const std::string &path, size_t maxBytes) {
    std::string content = ReadStart(path, maxBytes + 1);
    if (content.size() > maxBytes)
        throw FileFailure(path, "has more than " + std::to_string(maxBytes) + " bytes");
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

// 0 where the script leaves it to the other side.
int32_t SideFor(const Place &side, int32_t frameHeight) {
    return side.share > 0 || side.offset > 0 ? PixelsOf(side, frameHeight) : 0;
}

} // namespace

Font FontStore::Get(const std::string &path, int32_t direction) {
    Font &font = fonts[{path, direction}];
    if (font)
        return font;
    ReadStart(path, 1); // for the reason, if it can't be read: the library gives none
    errno = 0;          // malloc alone says that memory was short, even for a part of the font
    Font loaded(OrnMinRenderLoadCbfFont(path.c_str()), OrnMinRenderDestroyFont);
    if (errno == ENOMEM)
        throw std::bad_alloc();
    if (!loaded)
        throw FileFailure(path, "not a CBF font, or cut short (cbfdump --check tells more)");
    OrnMinRenderSetFontDirection(loaded.get(), direction);
    return font = loaded;
}

Bitmap LoadBitmap(const std::string &path) {
    const std::string content = ReadLimited(path, kMaxBitmapBytes);
    try {
        return ParsePbm(content);
    } catch (const Failure &failure) {
        throw FileFailure(path, failure.what());
    }
}

bool IsStill(const std::string &path) {
    std::string extension = std::filesystem::path(path).extension().string();
    for (char &c : extension)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return extension == ".png" || extension == ".jpg" || extension == ".jpeg";
}

StillFile::StillFile(std::string name, const Place &ofWidth, const Place &ofHeight,
                     PictureDecoder decoder)
    : path(std::move(name)), width(ofWidth), height(ofHeight), decode(std::move(decoder)) {
}

void StillFile::ScaleFor(int32_t frameHeight) {
    if (still && (frameHeight == madeFor || (width.share <= 0 && height.share <= 0)))
        return;
    still.reset();
    if (!decode)
        throw FileFailure(path, "only raw frames can be read here: this build is without FFmpeg's "
                                "libraries, which PNG and JPEG need");
    const std::string content = ReadLimited(path, kMaxStillBytes);
    try {
        still.emplace(decode(content, SideFor(width, frameHeight), SideFor(height, frameHeight)));
        madeFor = frameHeight;
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
    try {
        frame.emplace(shape); // no sooner: the file shows that the size is not just claimed
    } catch (const std::bad_alloc &) {
        throw FileFailure(path, "not enough memory for its frames of " +
                                    std::to_string(RawLayout(shape).Bytes()) + " bytes");
    }
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
