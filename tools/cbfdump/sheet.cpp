// SPDX-License-Identifier: MIT
// Cells are alike and as large as the largest glyph; their number in a row is what keeps the sheet
// from getting more than twice as high as wide.
#include "cbfdump/sheet.h"

#include "cbf/code_points.h"
#include "cbf/glyph_reader.h"
#include "common/utf8.h"

#include <algorithm>
#include <set>

namespace cbfdump {

namespace {

constexpr uint8_t kGridLuma = 200;
constexpr uint8_t kMissingLuma = 235;

constexpr uint32_t kMinColumns = 16;
constexpr uint32_t kMaxColumns = 256;

struct Sheet {
    OrnMinRenderRect cell; // around the pen
    uint32_t columns = kMinColumns;
    std::set<uint32_t> rows; // their first code points
    int32_t labelWidth = 0;

    int32_t CellWidth() const {
        return cell.right - cell.left;
    }
    int32_t CellHeight() const {
        return cell.bottom - cell.top;
    }
    int32_t Width() const {
        return labelWidth + static_cast<int32_t>(columns) * CellWidth() + 1;
    }
    int64_t Height() const {
        return static_cast<int64_t>(rows.size()) * CellHeight() + 1;
    }
};

// Large enough for every glyph and its advance, with a line of the grid left and on top.
OrnMinRenderRect CellFor(const cbf::View &file, const cbf::FontFile &contents) {
    OrnMinRenderRect cell = {-2, -1, 1, 1};
    for (const cbf::IndexEntry &entry : contents.index.entries) {
        const cbf::Glyph glyph = cbf::ReadGlyph(file, contents, entry.offset).glyph;
        cell.left = std::min(cell.left, glyph.bearingX - 2);
        cell.top = std::min(cell.top, -glyph.bearingY - 2);
        cell.right =
            std::max({cell.right, glyph.bearingX + glyph.width + 1, std::min(glyph.advance, 128)});
        cell.bottom = std::max(cell.bottom, glyph.height - glyph.bearingY + 1);
    }
    return cell;
}

bool CanWriteLabels(const cbf::FontFile &contents) {
    for (const char c : std::string("U+0123456789ABCDEF"))
        if (!cbf::FindOffset(contents.index, static_cast<uint8_t>(c)))
            return false;
    return true;
}

// As few columns as leave the sheet no more than twice as high as wide.
Sheet PlanSheet(const OrnMinRenderFont *font, const cbf::View &file,
                const cbf::FontFile &contents) {
    Sheet sheet;
    sheet.cell = CellFor(file, contents);
    if (CanWriteLabels(contents))
        sheet.labelWidth = Measure(font, "U+10FFF0 ").right + 4;
    for (;; sheet.columns *= 2) {
        sheet.rows.clear();
        for (const cbf::IndexEntry &entry : contents.index.entries)
            if (entry.codePoint <= tool::kMaxCodePoint)
                sheet.rows.insert(entry.codePoint / sheet.columns * sheet.columns);
        if (sheet.columns == kMaxColumns || sheet.Height() <= 2 * int64_t{sheet.Width()})
            return sheet;
    }
}

void DrawCell(const OrnMinRenderImage *image, const Sheet &sheet, OrnMinRenderFont *font,
              const cbf::FontFile &contents, uint32_t codePoint, OrnMinRenderPoint corner) {
    const OrnMinRenderRect rect = {corner.x, corner.y, corner.x + sheet.CellWidth() + 1,
                                   corner.y + sheet.CellHeight() + 1};
    const bool present = cbf::FindOffset(contents.index, codePoint).has_value();
    OrnMinRenderFillRectY8(nullptr, image, &rect, kGridLuma);
    const OrnMinRenderRect inside = {rect.left + 1, rect.top + 1, rect.right - 1, rect.bottom - 1};
    OrnMinRenderFillRectY8(nullptr, image, &inside, present ? kPaperLuma : kMissingLuma);
    OrnMinRenderPoint pen = {corner.x - sheet.cell.left, corner.y - sheet.cell.top};
    if (present)
        OrnMinRenderDrawTextY8(nullptr, image, font, tool::Utf8(codePoint).c_str(), &pen, 0,
                               kInkLuma);
}

} // namespace

Picture DrawSheet(const std::string &path, OrnMinRenderFont *font, const cbf::View &file,
                  const cbf::FontFile &contents) {
    const Sheet sheet = PlanSheet(font, file, contents);
    Picture picture = BlankPicture(path, sheet.Width(), sheet.Height());
    const OrnMinRenderImage image = ImageOf(picture);
    int32_t y = 0;
    for (const uint32_t first : sheet.rows) {
        OrnMinRenderPoint pen = {2, y - sheet.cell.top};
        if (sheet.labelWidth > 0)
            OrnMinRenderDrawTextY8(nullptr, &image, font, cbf::CodePointName(first).c_str(), &pen,
                                   0, kInkLuma);
        for (uint32_t i = 0; i < sheet.columns; ++i)
            DrawCell(&image, sheet, font, contents, first + i,
                     {sheet.labelWidth + static_cast<int32_t>(i) * sheet.CellWidth(), y});
        y += sheet.CellHeight();
    }
    return picture;
}

} // namespace cbfdump
