#include "font_picture.h"

#include "code_points.h"
#include "output_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr uint8_t kGridLuma = 200;
constexpr uint8_t kMissingLuma = 235;
constexpr int32_t kOutlineReach = 3; // pixels beyond the measured box

constexpr int64_t kMaxPixels = int64_t{1} << 28;

Picture BlankPicture(int64_t width, int64_t height) {
    if (width > kMaxPixels || height > kMaxPixels || width * height > kMaxPixels)
        throw OutputError("the picture would have " + std::to_string(width) + " x " +
                          std::to_string(height) + " pixels");
    return {static_cast<int32_t>(width), static_cast<int32_t>(height),
            std::vector<uint8_t>(static_cast<size_t>(width * height), kPaperLuma)};
}

OrnMinRenderImage ImageOf(Picture *picture) {
    OrnMinRenderImage image = {};
    image.width = picture->width;
    image.height = picture->height;
    image.stride = picture->width;
    image.yPlane = picture->luma.data();
    return image;
}

OrnMinRenderRect Measure(const OrnMinRenderFont *font, const std::string &text) {
    OrnMinRenderPoint pen = {0, 0};
    OrnMinRenderRect rect = {};
    OrnMinRenderGetTextRect(nullptr, font, text.c_str(), &pen, 0, &rect);
    return rect;
}

// ---- The sheet ----

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
OrnMinRenderRect CellFor(const cbf::Bytes &file, const cbf::FontFile &contents) {
    OrnMinRenderRect cell = {-2, -1, 1, 1};
    for (const auto &[codePoint, record] : contents.records) {
        const cbf::Glyph glyph = cbf::ReadGlyph(file, contents, record).glyph;
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
        if (contents.records.count(static_cast<uint8_t>(c)) == 0)
            return false;
    return true;
}

// As few columns as leave the sheet no more than twice as high as wide.
Sheet PlanSheet(const OrnMinRenderFont *font, const cbf::Bytes &file,
                const cbf::FontFile &contents) {
    Sheet sheet;
    sheet.cell = CellFor(file, contents);
    if (CanWriteLabels(contents))
        sheet.labelWidth = Measure(font, "U+10FFF0 ").right + 4;
    for (;; sheet.columns *= 2) {
        sheet.rows.clear();
        for (const auto &[codePoint, record] : contents.records)
            if (codePoint <= kMaxCodePoint)
                sheet.rows.insert(codePoint / sheet.columns * sheet.columns);
        if (sheet.columns == kMaxColumns || sheet.Height() <= 2 * int64_t{sheet.Width()})
            return sheet;
    }
}

void DrawCell(const OrnMinRenderImage *image, const Sheet &sheet, OrnMinRenderFont *font,
              const cbf::FontFile &contents, uint32_t codePoint, OrnMinRenderPoint corner) {
    const OrnMinRenderRect rect = {corner.x, corner.y, corner.x + sheet.CellWidth() + 1,
                                   corner.y + sheet.CellHeight() + 1};
    const bool present = contents.records.count(codePoint) > 0;
    OrnMinRenderFillRectY8(nullptr, image, &rect, kGridLuma);
    const OrnMinRenderRect inside = {rect.left + 1, rect.top + 1, rect.right - 1, rect.bottom - 1};
    OrnMinRenderFillRectY8(nullptr, image, &inside, present ? kPaperLuma : kMissingLuma);
    OrnMinRenderPoint pen = {corner.x - sheet.cell.left, corner.y - sheet.cell.top};
    if (present)
        OrnMinRenderDrawTextY8(nullptr, image, font, Utf8(codePoint).c_str(), &pen, 0, kInkLuma);
}

// ---- PNG ----

[[noreturn]] void BecomeFfmpeg(int input, int output) {
    dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    execlp("ffmpeg", "ffmpeg", "-v", "error", "-f", "image2pipe", "-c:v", "pgm", "-i", "-", "-f",
           "image2pipe", "-c:v", "png", "-", static_cast<char *>(nullptr));
    _exit(127);
}

bool WriteAll(int file, const std::string &bytes) {
    for (size_t done = 0; done < bytes.size();) {
        const ssize_t count = write(file, bytes.data() + done, bytes.size() - done);
        if (count < 0)
            return false;
        done += static_cast<size_t>(count);
    }
    return true;
}

// The child's exit status.
int RunFfmpeg(const std::string &pgm, int output) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw OutputError(std::string("ffmpeg: ") + std::strerror(errno));
    const auto before = std::signal(SIGPIPE, SIG_IGN); // a child that fails tells by its status
    const pid_t child = fork();
    if (child == 0)
        BecomeFfmpeg(ends[0], output);
    close(ends[0]);
    const bool written = child > 0 && WriteAll(ends[1], pgm);
    close(ends[1]);
    int status = -1;
    if (child > 0)
        waitpid(child, &status, 0);
    std::signal(SIGPIPE, before);
    return WIFEXITED(status) && (written || status != 0) ? WEXITSTATUS(status) : -1;
}

void WritePng(const std::string &pgm, const std::string &path) {
    OutputFile file(path);
    const int output =
        open(file.TemporaryPath().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (output < 0)
        throw OutputError(path + ": " + std::strerror(errno));
    const int status = RunFfmpeg(pgm, output);
    close(output);
    if (status == 127)
        throw OutputError(path + ": a PNG needs the ffmpeg program; FILE.pgm is written without");
    if (status != 0)
        throw OutputError(path + ": ffmpeg could not write it");
    file.Publish();
}

} // namespace

Picture DrawText(OrnMinRenderFont *font, int32_t direction, const std::string &text,
                 bool outlined) {
    OrnMinRenderSetFontDirection(font, direction);
    const OrnMinRenderRect rect = Measure(font, text);
    const int32_t margin = outlined ? kOutlineReach : 0;
    const int64_t width = int64_t{rect.right} - rect.left + 2 * margin;
    const int64_t height = int64_t{rect.bottom} - rect.top + 2 * margin;
    Picture picture = BlankPicture(width, height);
    const OrnMinRenderImage image = ImageOf(&picture);
    OrnMinRenderPoint pen = {margin - rect.left, margin - rect.top};
    const bool vertical =
        direction == OrnMinRenderTextDirection::Down || direction == OrnMinRenderTextDirection::Up;
    const int32_t lineStart = vertical ? pen.y : pen.x;
    if (outlined)
        OrnMinRenderDrawOutlineTextY8(nullptr, &image, font, text.c_str(), &pen, lineStart,
                                      kOutlineLuma, kInkLuma);
    else
        OrnMinRenderDrawTextY8(nullptr, &image, font, text.c_str(), &pen, lineStart, kInkLuma);
    return picture;
}

Picture DrawSheet(OrnMinRenderFont *font, const cbf::Bytes &file, const cbf::FontFile &contents) {
    const Sheet sheet = PlanSheet(font, file, contents);
    Picture picture = BlankPicture(sheet.Width(), sheet.Height());
    const OrnMinRenderImage image = ImageOf(&picture);
    int32_t y = 0;
    for (const uint32_t first : sheet.rows) {
        OrnMinRenderPoint pen = {2, y - sheet.cell.top};
        if (sheet.labelWidth > 0)
            OrnMinRenderDrawTextY8(nullptr, &image, font, CodePointName(first).c_str(), &pen, 0,
                                   kInkLuma);
        for (uint32_t i = 0; i < sheet.columns; ++i)
            DrawCell(&image, sheet, font, contents, first + i,
                     {sheet.labelWidth + static_cast<int32_t>(i) * sheet.CellWidth(), y});
        y += sheet.CellHeight();
    }
    return picture;
}

void WritePicture(const Picture &picture, const std::string &path) {
    CheckTarget(path);
    const std::string pgm = "P5\n" + std::to_string(picture.width) + " " +
                            std::to_string(picture.height) + "\n255\n" +
                            std::string(picture.luma.begin(), picture.luma.end());
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos || path.substr(dot) != ".pgm")
        return WritePng(pgm, path);
    OutputFile file(path);
    file.Write(pgm.data(), pgm.size());
    file.Publish();
}
