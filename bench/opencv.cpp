// SPDX-License-Identifier: MIT
// OpenCV drawing on matrix headers over the planes, chroma at half the coordinates; and OpenCV as
// it is mostly used on NV12 frames: converted to BGR, drawn into, converted back.
#include "jobs.h"

#include <opencv2/imgproc.hpp>

namespace bench {

namespace {

enum class Plane { Luma, Chroma, Bgr };

struct Canvas {
    cv::Mat mat;
    Plane plane;

    int Scale(int luma) const {
        return plane == Plane::Chroma ? luma / 2 : luma;
    }
    int LineWidth() const {
        return plane == Plane::Chroma ? 1 : 2;
    }
    cv::Scalar Value(Colour ink) const {
        return plane == Plane::Chroma ? cv::Scalar(ink.u, ink.v) : cv::Scalar::all(ink.y);
    }
    cv::Point At(int x, int y) const {
        return {Scale(x), Scale(y)};
    }
    cv::Rect Box(int x, int y, const Job &job) const {
        return {At(x, y), At(x + job.width, y + job.height)};
    }
};
using Canvases = std::vector<Canvas>;

// Stride is the width in all jobs.
Canvases PlanesOf(const Frame &frame) {
    Canvases planes = {{cv::Mat(frame.height, frame.width, CV_8UC1, frame.luma), Plane::Luma}};
    if (frame.chroma)
        planes.push_back(
            {cv::Mat(frame.height / 2, frame.width / 2, CV_8UC2, frame.chroma), Plane::Chroma});
    return planes;
}

// ---- Lines and round shapes ----

cv::Point LineEnd(const Job &job, int x, int y) {
    return {x + std::max(0, job.width - 1), y + std::max(0, job.height - 1)};
}

// OpenCV has no dashes: a line for each, 8 pixels of the longer axis long.
void DrawDashes(Canvas &canvas, const Job &job, int x, int y, int thickness) {
    const cv::Point end = LineEnd(job, x, y);
    const int length = std::max(job.width, job.height);
    const auto at = [&](int position) {
        return canvas.At(x + (end.x - x) * position / length, y + (end.y - y) * position / length);
    };
    for (int i = 8; i < length; i += 16)
        cv::line(canvas.mat, at(i), at(i + 7), canvas.Value(job.ink), thickness);
}

void DrawEllipse(Canvas &canvas, const Job &job, int x, int y, int thickness) {
    cv::ellipse(canvas.mat, canvas.At(x + job.width / 2, y + job.height / 2),
                cv::Size(canvas.Scale(job.width) / 2, canvas.Scale(job.height) / 2), 0, 0, 360,
                canvas.Value(job.ink), thickness);
}

// It has no rounded rectangle, either: four arcs, with lines or rectangles in between.
void DrawRounded(Canvas &canvas, const Job &job, int x, int y, int thickness) {
    cv::Mat &mat = canvas.mat;
    const cv::Scalar value = canvas.Value(job.ink);
    const int r = canvas.Scale(CornerRadius(job));
    const cv::Rect box = canvas.Box(x, y, job);
    const int left = box.x, right = box.x + box.width, top = box.y, bottom = box.y + box.height;
    cv::ellipse(mat, {left + r, top + r}, {r, r}, 180, 0, 90, value, thickness);
    cv::ellipse(mat, {right - r, top + r}, {r, r}, 270, 0, 90, value, thickness);
    cv::ellipse(mat, {right - r, bottom - r}, {r, r}, 0, 0, 90, value, thickness);
    cv::ellipse(mat, {left + r, bottom - r}, {r, r}, 90, 0, 90, value, thickness);
    if (thickness == cv::FILLED) {
        cv::rectangle(mat, {left + r, top}, {right - r, bottom - 1}, value, cv::FILLED);
        cv::rectangle(mat, {left, top + r}, {right - 1, bottom - r}, value, cv::FILLED);
        return;
    }
    cv::line(mat, {left + r, top}, {right - r, top}, value, thickness);
    cv::line(mat, {left + r, bottom}, {right - r, bottom}, value, thickness);
    cv::line(mat, {left, top + r}, {left, bottom - r}, value, thickness);
    cv::line(mat, {right, top + r}, {right, bottom - r}, value, thickness);
}

// ---- Shapes that need memory of their own ----

struct Tools {
    std::vector<cv::Point> points;
    cv::Mat mask; // of the bitmap
    cv::Mat scaled;
    cv::Mat mixed;
    Canvases source; // of blits
};

Tools MakeTools(const Job &job, const Frame &frame) {
    Tools tools;
    tools.points.resize(job.polygon.size());
    tools.mask.create(kBitmapSide, kBitmapSide, CV_8UC1);
    for (int row = 0; row < kBitmapSide; ++row)
        for (int column = 0; column < kBitmapSide; ++column)
            tools.mask.at<uint8_t>(row, column) = BitmapBit(column, row) ? 255 : 0;
    if (job.shape == Shape::Blit)
        tools.source = PlanesOf(BlitSource(frame));
    return tools;
}

void FillPolygon(Canvas &canvas, const Job &job, int x, int y, std::vector<cv::Point> *points) {
    for (size_t i = 0; i < points->size(); ++i)
        (*points)[i] = canvas.At(x + job.polygon[i].x, y + job.polygon[i].y);
    const cv::Point *first = points->data();
    const int count = int(points->size());
    cv::fillPoly(canvas.mat, &first, &count, 1, canvas.Value(job.ink));
}

void DrawBitmap(Canvas &canvas, const Job &job, int x, int y, Tools *tools) {
    cv::Mat area = canvas.mat(canvas.Box(x, y, job));
    const bool same = area.size() == tools->mask.size();
    if (!same)
        cv::resize(tools->mask, tools->scaled, area.size(), 0, 0, cv::INTER_NEAREST);
    const cv::Mat &stencil = same ? tools->mask : tools->scaled;
    if (job.shape == Shape::Bitmap) {
        area.setTo(canvas.Value(job.ink), stencil);
        return;
    }
    const cv::Mat solid(area.size(), area.type(), canvas.Value(job.ink));
    cv::addWeighted(area, 0.5, solid, 0.5, 0, tools->mixed);
    tools->mixed.copyTo(area, stencil);
}

void Blit(Canvas &canvas, const Job &job, int x, int y, const Canvases &source) {
    cv::Mat area = canvas.mat(canvas.Box(x, y, job));
    source[canvas.plane == Plane::Chroma].mat(canvas.Box(0, 0, job)).copyTo(area);
}

// A stroke font that is about as high as the library's; an outline is the same text, thicker.
void DrawText(Canvas &canvas, const Job &job, int x, int y) {
    const double scale = job.fontSize * 0.55 / 16;
    const int thickness = job.fontSize / 16;
    const int face = cv::FONT_HERSHEY_SIMPLEX;
    const cv::Point pen(x, y + job.fontSize);
    if (canvas.plane == Plane::Chroma)
        return; // the library's text has luma only
    if (job.shape == Shape::Measuring) {
        int baseline = 0;
        const cv::Size size = cv::getTextSize(job.text, face, scale, thickness, &baseline);
        asm volatile("" : : "m"(size)); // the result is wanted
        return;
    }
    if (job.shape == Shape::OutlinedText)
        cv::putText(canvas.mat, job.text, pen, face, scale, cv::Scalar::all(job.outline),
                    thickness + 4);
    cv::putText(canvas.mat, job.text, pen, face, scale, cv::Scalar::all(job.ink.y), thickness);
}

// ---- All shapes: the calls take so long that choosing among them at each place doesn't count ----

void Draw(Canvas &canvas, const Job &job, int x, int y, Tools *tools, bool thin) {
    const cv::Scalar value = canvas.Value(job.ink);
    const int width = thin ? 1 : canvas.LineWidth();
    const cv::Point end = LineEnd(job, x, y);
    switch (job.shape) {
    case Shape::Rectangle:
        return cv::rectangle(canvas.mat, canvas.Box(x, y, job), value, cv::FILLED);
    case Shape::Frame:
        return cv::rectangle(canvas.mat, canvas.Box(x, y, job), value, width);
    case Shape::Line:
        return cv::line(canvas.mat, canvas.At(x, y), canvas.At(end.x, end.y), value, width);
    case Shape::DashedLine:
        return DrawDashes(canvas, job, x, y, width);
    case Shape::Ellipse:
        return DrawEllipse(canvas, job, x, y, width);
    case Shape::FilledEllipse:
        return DrawEllipse(canvas, job, x, y, cv::FILLED);
    case Shape::RoundRect:
        return DrawRounded(canvas, job, x, y, width);
    case Shape::FilledRoundRect:
        return DrawRounded(canvas, job, x, y, cv::FILLED);
    case Shape::Polygon:
        return FillPolygon(canvas, job, x, y, &tools->points);
    case Shape::Bitmap:
    case Shape::HalfBitmap:
        return DrawBitmap(canvas, job, x, y, tools);
    case Shape::Blit:
        return Blit(canvas, job, x, y, tools->source);
    default:
        return DrawText(canvas, job, x, y);
    }
}

Painter PaintOn(const Canvases &planes, const Job &job, const Frame &frame) {
    // As the library has it in Y8.
    const bool thin = job.shape == Shape::DashedLine && job.height == 0 && !frame.chroma;
    return AtEveryPlace(
        [planes = planes, job, thin, tools = MakeTools(job, frame)](int x, int y) mutable {
            for (Canvas &canvas : planes)
                Draw(canvas, job, x, y, &tools, thin);
        });
}

// ---- By way of BGR ----

// The one BGR picture that the painters of an overlay share.
cv::Mat &BgrPicture() {
    static cv::Mat picture;
    return picture;
}

Painter MakeOnBgr(const Job &job, const Frame &frame) {
    BgrPicture().create(frame.height, frame.width, CV_8UC3);
    return PaintOn({{BgrPicture(), Plane::Bgr}}, job, frame);
}

// OpenCV converts BGR to planar chroma only, which is interleaved afterwards.
void StoreBgr(const cv::Mat &bgr, const Frame &frame, cv::Mat *planar) {
    cv::cvtColor(bgr, *planar, cv::COLOR_BGR2YUV_I420);
    const Canvases planes = PlanesOf(frame);
    planar->rowRange(0, frame.height).copyTo(planes[0].mat);
    uint8_t *u = planar->ptr(frame.height);
    uint8_t *v = u + ptrdiff_t(frame.width / 2) * (frame.height / 2);
    const cv::Mat halves[2] = {cv::Mat(frame.height / 2, frame.width / 2, CV_8UC1, u),
                               cv::Mat(frame.height / 2, frame.width / 2, CV_8UC1, v)};
    cv::Mat chroma = planes[1].mat;
    cv::merge(halves, 2, chroma);
}

} // namespace

Painter MakeOpenCv(const Job &job, const Frame &frame) {
    cv::setNumThreads(1);
    if (job.shape == Shape::ColdFont)
        return {};
    if (job.shape == Shape::Overlay)
        return MakeOverlay(frame, MakeOpenCv, MakeOpenCv);
    return PaintOn(PlanesOf(frame), job, frame);
}

Painter MakeOpenCvBgr(const Job &job, const Frame &frame) {
    if (job.shape != Shape::Overlay)
        return {};
    cv::setNumThreads(1);
    const Painter draw = MakeOverlay(frame, MakeOnBgr, MakeOnBgr);
    return [frame, draw, planar = cv::Mat()](const Places &places) mutable {
        const Canvases planes = PlanesOf(frame);
        cv::cvtColorTwoPlane(planes[0].mat, planes[1].mat, BgrPicture(), cv::COLOR_YUV2BGR_NV12);
        draw(places);
        StoreBgr(BgrPicture(), frame, &planar);
    };
}

} // namespace bench
