// SPDX-License-Identifier: MIT
// The header tells the size. Plain pixels are digits, raw ones bits.
#include "pbm.h"

#include "messages.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace overlay {

namespace {

constexpr int32_t kMaxBitmapSide = 32767; // larger ones are not drawn

bool IsSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// Comments run from '#' to the end of the line, wherever white space may stand.
void SkipSpace(std::string_view &content) {
    while (!content.empty() && (IsSpace(content[0]) || content[0] == '#')) {
        const bool comment = content[0] == '#';
        const size_t length = comment ? std::min(content.find_first_of("\r\n"), content.size()) : 1;
        content.remove_prefix(length);
    }
}

// So that no number begins or ends inside of what stands beside it.
void RequireSpace(std::string_view content) {
    if (!content.empty() && !IsSpace(content[0]) && content[0] != '#')
        throw Failure("its width and height are not numbers between white space");
}

int32_t TakeSide(std::string_view &content) {
    RequireSpace(content);
    SkipSpace(content);
    int32_t side = 0;
    const auto result = std::from_chars(content.data(), content.data() + content.size(), side);
    if (result.ec != std::errc() || side < 1 || side > kMaxBitmapSide)
        throw Failure("its width and height are not numbers from 1 to 32767");
    content.remove_prefix(static_cast<size_t>(result.ptr - content.data()));
    return side;
}

// One white space ends the header of raw pixels. A comment there would be taken for pixels by some
// programs and not by others.
void TakeLastSpace(std::string_view &content) {
    if (content.substr(0, 1) == "#")
        throw Failure("its header must end with one white space, not with a comment");
    content.remove_prefix(std::min<size_t>(1, content.size()));
}

void SetPixel(Bitmap &bitmap, size_t column, size_t row) {
    const size_t pitch = (static_cast<size_t>(bitmap.width) + 31) / 32;
    bitmap.words[row * pitch + column / 32] |= 0x80000000u >> column % 32;
}

// Digits 0 and 1, with or without white space between.
bool TakePlainPixel(std::string_view &content) {
    SkipSpace(content);
    if (content.empty() || (content[0] != '0' && content[0] != '1'))
        throw Failure(content.empty() ? "it is cut short" : "its pixels are not all 0 or 1");
    const bool black = content[0] == '1';
    content.remove_prefix(1);
    return black;
}

// Rows of whole bytes, the most significant bit leftmost.
bool RawPixel(std::string_view content, const Bitmap &bitmap, size_t column, size_t row) {
    const size_t rowBytes = (static_cast<size_t>(bitmap.width) + 7) / 8;
    const auto byte = static_cast<uint8_t>(content[row * rowBytes + column / 8]);
    return (byte >> (7 - column % 8) & 1) != 0;
}

} // namespace

Bitmap ParsePbm(std::string_view content) {
    const std::string_view magic = content.substr(0, 2);
    const bool raw = magic == "P4";
    if (!raw && magic != "P1")
        throw Failure("it is no PBM picture (P1 or P4)");
    content.remove_prefix(2);
    Bitmap bitmap;
    bitmap.width = TakeSide(content);
    bitmap.height = TakeSide(content);
    const auto width = static_cast<size_t>(bitmap.width);
    const auto height = static_cast<size_t>(bitmap.height);
    RequireSpace(content);
    if (raw)
        TakeLastSpace(content);
    // Memory is taken no sooner than the file shows that the size is not just claimed.
    if (content.size() < (raw ? (width + 7) / 8 : width) * height)
        throw Failure("it is cut short");
    bitmap.words.resize((width + 31) / 32 * height);
    for (size_t row = 0; row < height; ++row)
        for (size_t column = 0; column < width; ++column)
            if (raw ? RawPixel(content, bitmap, column, row) : TakePlainPixel(content))
                SetPixel(bitmap, column, row);
    return bitmap;
}

} // namespace overlay
