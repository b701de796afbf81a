// SPDX-License-Identifier: MIT
// Cairo, without anti-aliasing as the library draws: luma is an A8 surface, and a chroma plane an
// RGB16_565 surface whose 16 bits are a U,V pair, at half the scale.
#include "fonts.h"
#include "jobs.h"

#include <cairo/cairo.h>

#include <memory>

namespace bench {

namespace {

constexpr double kPi = 3.14159265358979323846;

// A plane with its context, and what some of the jobs need.
struct Plane {
    std::shared_ptr<cairo_t> context;
    bool chroma;
    std::shared_ptr<cairo_surface_t> source;  // of blits
    std::shared_ptr<cairo_pattern_t> pattern; // of bitmaps
};

// The pair as the colour that an RGB16_565 surface stores it for.
void SetSource(cairo_t *cr, Colour ink, bool chroma) {
    const unsigned pair = unsigned(ink.u) | unsigned(ink.v) << 8;
    if (chroma)
        cairo_set_source_rgb(cr, (pair >> 11) / 31.0, (pair >> 5 & 63) / 63.0, (pair & 31) / 31.0);
    else
        cairo_set_source_rgba(cr, 0, 0, 0, ink.y / 255.0);
}

cairo_surface_t *MakeSurface(const Frame &frame, bool chroma) {
    const int half = chroma ? 2 : 1;
    return cairo_image_surface_create_for_data(
        chroma ? frame.chroma : frame.luma, chroma ? CAIRO_FORMAT_RGB16_565 : CAIRO_FORMAT_A8,
        frame.width / half, frame.height / half, int(frame.stride));
}

// Coordinates are luma pixels on either plane.
Plane MakePlane(const Frame &frame, const Job &job, bool chroma) {
    cairo_surface_t *surface = MakeSurface(frame, chroma);
    cairo_t *cr = cairo_create(surface);
    cairo_surface_destroy(surface);
    cairo_set_antialias(cr, CAIRO_ANTIALIAS_NONE);
    cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
    cairo_set_fill_rule(cr, CAIRO_FILL_RULE_EVEN_ODD);
    SetSource(cr, job.ink, chroma);
    if (chroma)
        cairo_scale(cr, 0.5, 0.5);
    return {{cr, cairo_destroy}, chroma, nullptr, nullptr};
}

// ---- Paths ----

void SetDash(cairo_t *cr, const Job &job, const Frame &frame) {
    const double dash = 8;
    cairo_set_dash(cr, &dash, 1, 8);
    if (job.height == 0 && !frame.chroma)
        cairo_set_line_width(cr, 1); // as the library has it
}

// A stroke lies half on either side of its path.
void AddLine(cairo_t *cr, double x, double y, const Job &job) {
    x += job.width == 0 ? 1 : 0;
    y += job.height == 0 ? 1 : 0;
    cairo_move_to(cr, x, y);
    cairo_line_to(cr, x + job.width, y + job.height);
}

void AddEllipse(cairo_t *cr, double x, double y, const Job &job) {
    cairo_save(cr);
    cairo_translate(cr, x + job.width / 2.0, y + job.height / 2.0);
    cairo_scale(cr, job.width / 2.0, job.height / 2.0);
    cairo_arc(cr, 0, 0, 1, 0, 2 * kPi);
    cairo_restore(cr);
    cairo_close_path(cr);
}

void AddRoundRect(cairo_t *cr, double x, double y, const Job &job) {
    const double r = CornerRadius(job), right = x + job.width, bottom = y + job.height;
    cairo_new_sub_path(cr);
    cairo_arc(cr, right - r, y + r, r, -kPi / 2, 0);
    cairo_arc(cr, right - r, bottom - r, r, 0, kPi / 2);
    cairo_arc(cr, x + r, bottom - r, r, kPi / 2, kPi);
    cairo_arc(cr, x + r, y + r, r, kPi, kPi * 3 / 2);
    cairo_close_path(cr);
}

void AddPolygon(cairo_t *cr, int x, int y, const Job &job) {
    for (const Point &point : job.polygon)
        cairo_line_to(cr, x + point.x, y + point.y);
    cairo_close_path(cr);
}

// ---- Pictures ----

cairo_pattern_t *MakeBitmapPattern() {
    cairo_surface_t *mask = cairo_image_surface_create(CAIRO_FORMAT_A8, kBitmapSide, kBitmapSide);
    uint8_t *data = cairo_image_surface_get_data(mask);
    for (int row = 0; row < kBitmapSide; ++row)
        for (int column = 0; column < kBitmapSide; ++column)
            data[row * cairo_image_surface_get_stride(mask) + column] =
                BitmapBit(column, row) ? 255 : 0;
    cairo_surface_mark_dirty(mask);
    cairo_pattern_t *pattern = cairo_pattern_create_for_surface(mask);
    cairo_surface_destroy(mask);
    cairo_pattern_set_filter(pattern, CAIRO_FILTER_NEAREST);
    return pattern;
}

void DrawBitmap(const Plane &plane, int x, int y, const Job &job) {
    cairo_matrix_t matrix;
    cairo_matrix_init_scale(&matrix, double(kBitmapSide) / job.width,
                            double(kBitmapSide) / job.height);
    cairo_matrix_translate(&matrix, -x, -y);
    cairo_pattern_set_matrix(plane.pattern.get(), &matrix);
    cairo_mask(plane.context.get(), plane.pattern.get());
}

// In the plane's own scale, so that pixels are copied.
void Blit(const Plane &plane, int x, int y, const Job &job) {
    cairo_t *cr = plane.context.get();
    const int half = plane.chroma ? 2 : 1;
    cairo_save(cr);
    cairo_identity_matrix(cr);
    cairo_set_source_surface(cr, plane.source.get(), x / half, y / half);
    cairo_rectangle(cr, x / half, y / half, job.width / half, job.height / half);
    cairo_fill(cr);
    cairo_restore(cr);
}

// ---- Text ----

void SelectFont(cairo_t *cr, int size) {
    cairo_select_font_face(cr, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cr, size);
    cairo_font_options_t *options = cairo_font_options_create();
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_NONE);
    cairo_set_font_options(cr, options);
    cairo_font_options_destroy(options);
}

// The band is the stroked outline of the text.
void DrawText(cairo_t *cr, int x, int y, const Job &job) {
    const int baseline = y + PenHeight(job.fontSize);
    cairo_text_extents_t extents;
    if (job.shape == Shape::Measuring)
        return cairo_text_extents(cr, job.text.c_str(), &extents);
    if (job.shape == Shape::OutlinedText) {
        cairo_move_to(cr, x, baseline);
        cairo_text_path(cr, job.text.c_str());
        SetSource(cr, {job.outline, 0, 0}, false);
        cairo_stroke(cr);
        SetSource(cr, job.ink, false);
    }
    cairo_move_to(cr, x, baseline);
    cairo_show_text(cr, job.text.c_str());
}

// ---- All shapes ----

void AddPath(cairo_t *cr, int x, int y, const Job &job) {
    switch (job.shape) {
    case Shape::Rectangle:
        return cairo_rectangle(cr, x, y, job.width, job.height);
    case Shape::Frame:
        return cairo_rectangle(cr, x + 1, y + 1, job.width - 2, job.height - 2);
    case Shape::Ellipse:
        return AddEllipse(cr, x + 1, y + 1, job);
    case Shape::FilledEllipse:
        return AddEllipse(cr, x, y, job);
    case Shape::RoundRect:
        return AddRoundRect(cr, x + 1, y + 1, job);
    case Shape::FilledRoundRect:
        return AddRoundRect(cr, x, y, job);
    case Shape::Polygon:
        return AddPolygon(cr, x, y, job);
    default:
        return AddLine(cr, x, y, job);
    }
}

void Draw(const Plane &plane, int x, int y, const Job &job) {
    cairo_t *cr = plane.context.get();
    switch (job.shape) {
    case Shape::Bitmap:
        return DrawBitmap(plane, x, y, job);
    case Shape::Blit:
        return Blit(plane, x, y, job);
    case Shape::Text:
    case Shape::OutlinedText:
    case Shape::Measuring:
        return plane.chroma ? void() : DrawText(cr, x, y, job);
    case Shape::Rectangle:
    case Shape::FilledEllipse:
    case Shape::FilledRoundRect:
    case Shape::Polygon:
        AddPath(cr, x, y, job);
        return cairo_fill(cr);
    default:
        AddPath(cr, x, y, job);
        return cairo_stroke(cr);
    }
}

void Prepare(Plane *plane, const Job &job, const Frame &frame) {
    cairo_t *cr = plane->context.get();
    const bool text = job.fontSize > 0;
    cairo_set_line_width(cr, text ? 4 : 2);
    if (text)
        SelectFont(cr, job.fontSize);
    if (job.shape == Shape::DashedLine)
        SetDash(cr, job, frame);
    if (job.shape == Shape::Bitmap)
        plane->pattern.reset(MakeBitmapPattern(), cairo_pattern_destroy);
    if (job.shape == Shape::Blit)
        plane->source.reset(MakeSurface(BlitSource(frame), plane->chroma), cairo_surface_destroy);
}

} // namespace

Painter MakeCairo(const Job &job, const Frame &frame) {
    if (job.shape == Shape::Overlay)
        return MakeOverlay(frame, MakeCairo, MakeCairo);
    // Half transparent, the 5, 6 and 5 bits of a chroma pair would be blended, not its bytes.
    if (job.shape == Shape::HalfBitmap || job.shape == Shape::ColdFont)
        return {};
    std::vector<Plane> planes = {MakePlane(frame, job, false)};
    if (frame.chroma)
        planes.push_back(MakePlane(frame, job, true));
    for (Plane &plane : planes)
        Prepare(&plane, job, frame);
    return AtEveryPlace([planes, job](int x, int y) {
        for (const Plane &plane : planes)
            Draw(plane, x, y, job);
    });
}

} // namespace bench
