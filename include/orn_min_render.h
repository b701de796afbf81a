/* SPDX-License-Identifier: MIT */
/*
 * liborn_min_render: burns overlays straight into video frames held in memory.
 *
 * The caller owns the frame. Every call draws into its planes before it returns, on the calling
 * thread. Nothing is converted, copied or kept. Memory is allocated only to create a context, to
 * load a font, to draw a glyph for the first time and to fit a text to a width.
 *
 * Layouts. The suffix of a call names the planes that it writes. Y8 has one byte of luma per pixel.
 * YUV420SP (NV12) has the same luma, and a chroma plane of half the resolution. That one has a pair
 * of bytes, U first, then V, for every 2 x 2 block of pixels. Such a pair is called a chroma
 * sample. The chroma sample of a luma pixel has half its coordinates, rounded down.
 *
 * Coordinates are luma pixels, x to the right and y downward, (0, 0) the first pixel. Unless a call
 * says otherwise, every int32 value is legal: what lies outside the frame is clipped, sums saturate
 * at the int32 limits, and the work is bounded by the frame. An end that is called exclusive is not
 * painted.
 *
 * Missing things. A plane whose pointer is null is skipped and the other one is drawn as usual. A
 * null image, rectangle, point list, colour triple, font or string draws nothing. Three kinds of
 * call need a context: filled polygons, filled ellipses and filled rounded rectangles. They draw
 * nothing if it is null. All others may be given a null context. The calls marked "trusts its
 * input" check nothing at all. No call reports an error: constructors return null, drawing calls
 * leave the pixels as they were.
 *
 * Threads. The library has no state of its own and takes no locks. A context serves one call at a
 * time, since its scratch memory holds the span lists of the call. A font serves one drawing or
 * direction-changing call at a time, since drawing adds to its glyph cache. Separate contexts and
 * fonts may be used on separate threads, also on one frame, as long as no two calls write the same
 * pixel or chroma sample. Bytes that a call does not draw are never written, not even with their
 * own value. Colour conversion and measuring only read their arguments.
 */
#ifndef ORN_MIN_RENDER_H
#define ORN_MIN_RENDER_H

#include <stddef.h>
#include <stdint.h>

#define ORN_MIN_RENDER_VERSION_MAJOR 1
#define ORN_MIN_RENDER_VERSION_MINOR 0
#define ORN_MIN_RENDER_VERSION_PATCH 0

#if defined(__GNUC__)
#define ORN_MIN_RENDER_API __attribute__((visibility("default")))
#else
#define ORN_MIN_RENDER_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------------------------------
 * Records
 * --------------------------------------------------------------------------------------------- */

/*
 * A frame in the caller's memory. The library only reads the record.
 *
 * Row y of the luma plane starts at yPlane + y * stride, row cy of the chroma plane at
 * uvPlane + cy * stride. The stride is in bytes and holds for both planes. The chroma plane has
 * (height + 1) / 2 rows of (width + 1) / 2 byte pairs. With a chroma plane the stride is even, and
 * at least width rounded up to even.
 *
 * caller0 and caller1 are for the caller's own use, for example the handle of the buffer that the
 * planes lie in, or the time of the frame. The library leaves them alone.
 */
typedef struct OrnMinRenderImage {
    uint64_t caller0; /* for the caller's own use; never read or written */
    int32_t width;    /* luma pixels */
    int32_t height;   /* luma rows */
    int64_t stride;   /* bytes from one row to the next */
    uint8_t *yPlane;  /* luma, may be null */
    uint64_t caller1; /* the same */
    uint8_t *uvPlane; /* interleaved chroma, may be null */
} OrnMinRenderImage;

/* A colour of the YUV420SP calls: full-range luma, Cb and Cr. */
typedef struct OrnMinRenderColour {
    uint8_t y;
    uint8_t u;
    uint8_t v;
} OrnMinRenderColour;

typedef struct OrnMinRenderPoint {
    int32_t x;
    int32_t y;
} OrnMinRenderPoint;

/* Two corners. Each call says whether right and bottom are painted, and whether the order of the
 * corners matters. */
typedef struct OrnMinRenderRect {
    int32_t left;
    int32_t top;
    int32_t right;
    int32_t bottom;
} OrnMinRenderRect;

/* A horizontal run: columns start.x up to but not including end.x of row start.y. end.y is not
 * read. */
typedef struct OrnMinRenderScanline {
    OrnMinRenderPoint start;
    OrnMinRenderPoint end;
} OrnMinRenderScanline;

/* Where a glyph's pixels lie: columns start at pen.x + bearingX, rows at pen.y - bearingY and go
 * down. */
typedef struct OrnMinRenderGlyphBox {
    int8_t width;
    int8_t height;
    int8_t bearingX;
    int8_t bearingY;
} OrnMinRenderGlyphBox;

/*
 * One entry of a font's glyph cache. Bitmaps are rows of (columns + 31) / 32 words. The least
 * significant bit is leftmost, and a set bit is ink. The font owns the bitmaps.
 */
typedef struct OrnMinRenderGlyph {
    uint32_t next;         /* chain link: 1 + position of the next entry, 0 at the end */
    uint32_t codePoint;    /* what the entry stands for */
    const uint8_t *record; /* the glyph's record in the font's glyph data */
    uint32_t *bitmap;      /* fill, turned for the font's direction; null without pixels */
    uint32_t *outline;     /* band of two pixels around the fill; null when there is none */
    uint32_t bitmapWords;
    uint32_t outlineWords;
} OrnMinRenderGlyph;

typedef struct OrnMinRenderContext OrnMinRenderContext; /* scratch memory of one drawing thread */
typedef struct OrnMinRenderFont OrnMinRenderFont;       /* a loaded CBF font with its glyph cache */

/*
 * Writing directions, the int32 values of OrnMinRenderSetFontDirection:
 *   0  left to right
 *   1  top to bottom, glyphs turned 90 degrees clockwise
 *   2  bottom to top, glyphs turned 90 degrees counter-clockwise
 *   3  right to left, glyphs upside down
 * In C they are called OrnMinRenderTextDirectionDown and so on, in C++
 * OrnMinRenderTextDirection::Down and so on. A variable of the type OrnMinRenderTextDirection holds
 * either, and converts to int32_t.
 */
#ifdef __cplusplus
struct OrnMinRenderTextDirection {
    enum Value : int32_t { Normal = 0, Down = 1, Up = 2, Inverted = 3 };

    constexpr OrnMinRenderTextDirection(Value direction = Normal) : value(direction) {
    }
    constexpr operator Value() const {
        return value;
    }

    Value value;
};
#else
typedef int32_t OrnMinRenderTextDirection; /* the type of an enum of these would be unsigned */
enum {
    OrnMinRenderTextDirectionNormal = 0,
    OrnMinRenderTextDirectionDown = 1,
    OrnMinRenderTextDirectionUp = 2,
    OrnMinRenderTextDirectionInverted = 3
};
#endif

/* Line styles, the int32 values of the style arguments. Any other value draws nothing. */
enum {
    OrnMinRenderLineSolid = 0,
    /* 8 pixels off, 8 on, fixed to the frame's coordinates: a luma pixel is painted when bit 3 of
     * its coordinate along the line is set, a chroma sample when bit 2 of its own is. */
    OrnMinRenderLineDashed = 1
};

/* ------------------------------------------------------------------------------------------------
 * Contexts
 * --------------------------------------------------------------------------------------------- */

/* Makes a context, or returns null when memory is short or OrnMinRenderTextInit fails. The caller
 * releases it with OrnMinRenderDestroyContext. */
ORN_MIN_RENDER_API OrnMinRenderContext *OrnMinRenderCreateContext(void);

/* Releases a context; null is ignored. */
ORN_MIN_RENDER_API void OrnMinRenderDestroyContext(OrnMinRenderContext *context);

/* Text set-up of a new context, called once by OrnMinRenderCreateContext. Does nothing and returns
 * 0. A program may define its own. If that returns any other value, no context is created. */
ORN_MIN_RENDER_API int32_t OrnMinRenderTextInit(OrnMinRenderContext *context);

/* ------------------------------------------------------------------------------------------------
 * Colours
 * --------------------------------------------------------------------------------------------- */

/*
 * Converts three bytes R, G, B to three bytes Y, U, V. The equations are those of full-range
 * BT.601, as in the JPEG File Interchange Format (ITU-T T.871), in 16.16 fixed point, rounded down.
 * White becomes (254, 128, 128). Both pointers may be the same. An OrnMinRenderColour is three such
 * bytes: pass &colour.y, or in C++ the record's own address.
 */
ORN_MIN_RENDER_API void OrnMinRenderRGB2YUV(uint8_t *yuv, const uint8_t *rgb);

/* The inverse of OrnMinRenderRGB2YUV, each result clamped to 0..255. Both pointers may be the
 * same. */
ORN_MIN_RENDER_API void OrnMinRenderYUV2RGB(uint8_t *rgb, const uint8_t *yuv);

/* ------------------------------------------------------------------------------------------------
 * Pixels and spans: building blocks. Each trusts its input: image, plane and coordinates must be
 * valid.
 * --------------------------------------------------------------------------------------------- */

/* Writes luma pixel (x, y). Trusts its input. */
ORN_MIN_RENDER_API void OrnMinRenderSetYPixel(const OrnMinRenderImage *image, int32_t x, int32_t y,
                                              uint8_t luma);

/* Writes u and v to chroma sample (cx, cy), in chroma coordinates. Trusts its input. */
ORN_MIN_RENDER_API void OrnMinRenderSetUVPixel(const OrnMinRenderImage *image, int32_t cx,
                                               int32_t cy, OrnMinRenderColour colour);

/*
 * Paints a list of spans into the luma plane. count is the number of points, two for each span; 0
 * or less paints nothing. Every span must lie inside the plane with start.x <= end.x. Trusts its
 * input.
 */
ORN_MIN_RENDER_API void OrnMinRenderDrawScanlinesY8(const OrnMinRenderImage *image,
                                                    const OrnMinRenderScanline *spans,
                                                    int32_t count, uint8_t luma);

/* Like OrnMinRenderDrawScanlinesY8, but paints u and v into the chroma plane; the spans are in
 * chroma samples and chroma rows. Trusts its input. */
ORN_MIN_RENDER_API void OrnMinRenderDrawScanlinesUV(const OrnMinRenderImage *image,
                                                    const OrnMinRenderScanline *spans,
                                                    int32_t count, OrnMinRenderColour colour);

/*
 * Fills columns left..right - 1 of rows top..bottom - 1 of the luma plane, if there is one. The
 * rectangle must be ordered and lie inside the frame (0 <= left <= right <= width and so on). An
 * empty one paints nothing. It may have any height. Trusts the rectangle.
 */
ORN_MIN_RENDER_API void OrnMinRenderFillRectY8Impl(OrnMinRenderContext *context,
                                                   const OrnMinRenderImage *image,
                                                   const OrnMinRenderRect *rect, uint8_t luma);

/* Like OrnMinRenderFillRectY8Impl, but paints every chroma sample of which the rectangle (still in
 * luma pixels) holds at least one pixel. Trusts the rectangle. */
ORN_MIN_RENDER_API void OrnMinRenderFillRectUVImpl(OrnMinRenderContext *context,
                                                   const OrnMinRenderImage *image,
                                                   const OrnMinRenderRect *rect,
                                                   OrnMinRenderColour colour);

/* ------------------------------------------------------------------------------------------------
 * Lines, two pixels thick
 * --------------------------------------------------------------------------------------------- */

/*
 * Horizontal line over columns min(x0, x1)..max(x0, x1) - 1: rows y and y + 1 when solid, row y
 * alone when dashed. Each row is drawn when it lies inside the frame.
 */
ORN_MIN_RENDER_API void OrnMinRenderDrawHLineY8(OrnMinRenderContext *context,
                                                const OrnMinRenderImage *image, int32_t x0,
                                                int32_t x1, int32_t y, uint8_t luma, int32_t style);

/* Another name of OrnMinRenderDrawHLineY8. */
ORN_MIN_RENDER_API void OrnMinRenderDrawHLineY(OrnMinRenderContext *context,
                                               const OrnMinRenderImage *image, int32_t x0,
                                               int32_t x1, int32_t y, uint8_t luma, int32_t style);

/*
 * Like OrnMinRenderDrawHLineY8, but draws rows y and y + 1 in either style, and chroma: the samples
 * of chroma row y / 2 (when y lies inside the frame) from min(x0, x1) / 2 up to but not including
 * max(x0, x1) / 2. Both ends are first clamped to the frame, and the halves are rounded down.
 */
ORN_MIN_RENDER_API void OrnMinRenderDrawHLineYUV420SP(OrnMinRenderContext *context,
                                                      const OrnMinRenderImage *image, int32_t x0,
                                                      int32_t x1, int32_t y,
                                                      OrnMinRenderColour colour, int32_t style);

/*
 * Vertical line over columns x and x + 1, rows y0..y1 - 1. Draws nothing when a column lies outside
 * the frame, and nothing when y0 >= y1. */
ORN_MIN_RENDER_API void OrnMinRenderDrawVLineY8(OrnMinRenderContext *context,
                                                const OrnMinRenderImage *image, int32_t x,
                                                int32_t y0, int32_t y1, uint8_t luma,
                                                int32_t style);

/*
 * Like OrnMinRenderDrawVLineY8, but y0 and y1 may come in either order. Also draws chroma: the rows
 * of chroma column x / 2 from min(y0, y1) / 2 up to but not including max(y0, y1) / 2. Both ends
 * are first clamped to the frame, and the halves are rounded down.
 */
ORN_MIN_RENDER_API void OrnMinRenderDrawVLineYUV420SP(OrnMinRenderContext *context,
                                                      const OrnMinRenderImage *image, int32_t x,
                                                      int32_t y0, int32_t y1,
                                                      OrnMinRenderColour colour, int32_t style);

/*
 * Line from p0 to p1, both included, by Bresenham's algorithm. A shallow line (at most as high as
 * wide) also covers the pixel below each of its points, a steep one the pixel to the right. The
 * line is first clipped (Cohen-Sutherland, exact for every int32 point) to columns 0..width - 2 and
 * rows 0..height - 2. Dashes run along the longer axis. */
ORN_MIN_RENDER_API void OrnMinRenderDrawLineY8(OrnMinRenderContext *context,
                                               const OrnMinRenderImage *image, OrnMinRenderPoint p0,
                                               OrnMinRenderPoint p1, uint8_t luma, int32_t style);

/* Like OrnMinRenderDrawLineY8. Also draws a chroma line one sample thick with the same slope, from
 * the first point's chroma sample on. Samples outside the chroma plane are left out. */
ORN_MIN_RENDER_API void OrnMinRenderDrawLineYUV420SP(OrnMinRenderContext *context,
                                                     const OrnMinRenderImage *image,
                                                     OrnMinRenderPoint p0, OrnMinRenderPoint p1,
                                                     OrnMinRenderColour colour, int32_t style);

/* ------------------------------------------------------------------------------------------------
 * Shapes
 * --------------------------------------------------------------------------------------------- */

/*
 * Frame of four lines, two pixels thick, inside columns left..right and rows top..bottom, all of
 * them included. So it reaches one column and one row further than a fill of the same rectangle.
 * The corners are not put in order. The frame is what these four lines draw: horizontal ones from
 * left to right at top and bottom - 1, vertical ones from top to bottom + 1 at left and right - 1.
 */
ORN_MIN_RENDER_API void OrnMinRenderDrawFrameY8(OrnMinRenderContext *context,
                                                const OrnMinRenderImage *image,
                                                const OrnMinRenderRect *rect, uint8_t luma,
                                                int32_t style);

/* Like OrnMinRenderDrawFrameY8, with the chroma of the four lines. */
ORN_MIN_RENDER_API void OrnMinRenderDrawFrameYUV420SP(OrnMinRenderContext *context,
                                                      const OrnMinRenderImage *image,
                                                      const OrnMinRenderRect *rect,
                                                      OrnMinRenderColour colour, int32_t style);

/* Fills a rectangle. right and bottom are exclusive. The corners may come in either order. A
 * rectangle of any height is filled completely. */
ORN_MIN_RENDER_API void OrnMinRenderFillRectY8(OrnMinRenderContext *context,
                                               const OrnMinRenderImage *image,
                                               const OrnMinRenderRect *rect, uint8_t luma);

/* Like OrnMinRenderFillRectY8. Also paints every chroma sample that holds a painted pixel. */
ORN_MIN_RENDER_API void OrnMinRenderFillRectYUV420SP(OrnMinRenderContext *context,
                                                     const OrnMinRenderImage *image,
                                                     const OrnMinRenderRect *rect,
                                                     OrnMinRenderColour colour);

/*
 * Fills the polygon of count vertices by the even-odd rule. The last vertex is joined to the first.
 * Left and top edges are painted, right and bottom ones are not. So a rectangle given by its
 * corners fills what OrnMinRenderFillRectY8 fills. Vertices may lie anywhere. A polygon of fewer
 * than three vertices draws nothing. Nor does one whose outline has 4096 or more crossing points
 * with the rows of the plane. A convex shape has two for each row, and up to two more on a row that
 * holds a vertex.
 */
ORN_MIN_RENDER_API void OrnMinRenderFillPolygonY8(OrnMinRenderContext *context,
                                                  const OrnMinRenderImage *image,
                                                  const OrnMinRenderPoint *points, size_t count,
                                                  uint8_t luma);

/* Like OrnMinRenderFillPolygonY8. Then does the same in the chroma plane, here of width / 2 by
 * height / 2 samples, with every vertex halved (rounded down). Whether a plane is drawn depends on
 * its own number of crossing points. */
ORN_MIN_RENDER_API void OrnMinRenderFillPolygonYUV420SP(OrnMinRenderContext *context,
                                                        const OrnMinRenderImage *image,
                                                        const OrnMinRenderPoint *points,
                                                        size_t count, OrnMinRenderColour colour);

/*
 * Outline of the ellipse inscribed in the rectangle: a ring of 2 x 2 blocks over columns
 * left..right + 1 and rows top..bottom + 1. The corners may come in either order. Each block has
 * one chroma sample, on the outer side of the ring. No block is anchored on row 0. Very long and
 * thin rings may have gaps where the stepping (a midpoint algorithm in integers) leaves them.
 * Nothing is drawn if the width or height is more than 65536 pixels. */
ORN_MIN_RENDER_API void OrnMinRenderDrawEllipseYUV420SP(OrnMinRenderContext *context,
                                                        const OrnMinRenderImage *image,
                                                        const OrnMinRenderRect *rect,
                                                        OrnMinRenderColour colour);

/*
 * Fills the ellipse inscribed in the rectangle, inside its outline: rows top + 1..bottom - 1 (for
 * even heights), right exclusive. The corners may come in either order. An ellipse of any height is
 * filled completely. Chroma is rounded inward. Nothing is filled for a width of 1, for a height
 * below 2, or if either is more than 65536 pixels.
 */
ORN_MIN_RENDER_API void OrnMinRenderFillEllipseYUV420SP(OrnMinRenderContext *context,
                                                        const OrnMinRenderImage *image,
                                                        const OrnMinRenderRect *rect,
                                                        OrnMinRenderColour colour);

/*
 * Outline of a rectangle with rounded corners: a ring two pixels thick over columns left..right + 1
 * and rows top..bottom + 1. The corners of rect may come in either order. radii holds the
 * horizontal radius x and the vertical radius y of the corners, in pixels. Each is cut down to half
 * the side. With the largest radii, and even sides, this is the ellipse outline. A radius of 0 or
 * less makes the corners square. Nothing is drawn for radii above 32768. The chroma is that of the
 * ellipse outline at the corners, and that of solid lines at the sides.
 */
ORN_MIN_RENDER_API void OrnMinRenderDrawRoundRectYUV420SP(OrnMinRenderContext *context,
                                                          const OrnMinRenderImage *image,
                                                          const OrnMinRenderRect *rect,
                                                          const OrnMinRenderPoint *radii,
                                                          OrnMinRenderColour colour);

/*
 * Fills a rectangle with rounded corners, inside its outline. rect and radii are as in
 * OrnMinRenderDrawRoundRectYUV420SP, right is exclusive. With radii of 0 or less this is exactly
 * OrnMinRenderFillRectYUV420SP. Chroma is rounded inward at the corners, and outward between them.
 */
ORN_MIN_RENDER_API void OrnMinRenderFillRoundRectYUV420SP(OrnMinRenderContext *context,
                                                          const OrnMinRenderImage *image,
                                                          const OrnMinRenderRect *rect,
                                                          const OrnMinRenderPoint *radii,
                                                          OrnMinRenderColour colour);

/* ------------------------------------------------------------------------------------------------
 * Pictures. None of these calls takes a context.
 * --------------------------------------------------------------------------------------------- */

/*
 * Copies pixels of source, from position on, into the rectangle of image (right and bottom
 * exclusive), clipped to both. If w x h pixels remain, w bytes of h / 2 chroma rows are copied.
 * They are taken from the sample that holds the first pixel, and go to the sample that holds its
 * destination. So even positions and sizes copy whole samples, an odd last row copies none, and an
 * odd w ends with a U without its V. A plane that either image lacks is skipped. The two images
 * must not overlap in memory.
 */
ORN_MIN_RENDER_API void OrnMinRenderBltYUV420SP(const OrnMinRenderImage *image,
                                                OrnMinRenderRect rect,
                                                const OrnMinRenderImage *source,
                                                OrnMinRenderPoint position);

/* Bits in a word of a caller's bitmap: a row of width columns takes
 * (width + WordWidth - 1) / WordWidth words. */
ORN_MIN_RENDER_API extern const int64_t WordWidth;

/*
 * Draws a 1-bit bitmap of width x height, scaled to the rectangle (right and bottom exclusive).
 * Each pixel is the nearest one of the bitmap, found in 16.16 fixed point with the step rounded
 * down. Rows are words of 32 bits, the most significant bit leftmost. A set bit paints, a clear one
 * leaves the pixel. What lies outside the frame is cut off, and the rest is scaled as if it were
 * not. A rectangle in reverse order, or a side of the bitmap outside 1..32767, draws nothing. The
 * caller's bits are only read.
 */
ORN_MIN_RENDER_API void OrnMinRenderDrawBitmapY8(const OrnMinRenderImage *image,
                                                 const OrnMinRenderRect *rect, int32_t width,
                                                 int32_t height, const uint32_t *bits,
                                                 uint8_t luma);

/* Like OrnMinRenderDrawBitmapY8. Then scales the bitmap once more for the chroma plane, to the
 * rectangle with its coordinates halved toward zero. */
ORN_MIN_RENDER_API void OrnMinRenderDrawBitmapYUV420SP(const OrnMinRenderImage *image,
                                                       const OrnMinRenderRect *rect, int32_t width,
                                                       int32_t height, const uint32_t *bits,
                                                       OrnMinRenderColour colour);

/* Like OrnMinRenderDrawBitmapYUV420SP, but every painted byte becomes the average of what was there
 * and the colour, rounded down. */
ORN_MIN_RENDER_API void OrnMinRenderDrawBitmapSemiTransparentYUV420SP(
    const OrnMinRenderImage *image, const OrnMinRenderRect *rect, int32_t width, int32_t height,
    const uint32_t *bits, OrnMinRenderColour colour);

/* ------------------------------------------------------------------------------------------------
 * Fonts
 * --------------------------------------------------------------------------------------------- */

/*
 * Loads a CBF font from a file. Returns null when the file can't be opened, when it is cut short in
 * its header or glyph data, or when memory is short. A font whose tables or index can't be read
 * loads, and draws nothing or blank glyphs. The file may be hostile: nothing outside it is read,
 * and loading takes memory and time in proportion to its length. The caller releases the font with
 * OrnMinRenderDestroyFont.
 */
ORN_MIN_RENDER_API OrnMinRenderFont *OrnMinRenderLoadCbfFont(const char *path);

/* Releases a font with its cached glyphs; null is ignored. */
ORN_MIN_RENDER_API void OrnMinRenderDestroyFont(OrnMinRenderFont *font);

/*
 * Decodes the glyph at glyph->record into new bitmaps, turned for the font's direction. It doesn't
 * look at the bitmaps that the entry held, so use it for a fresh entry. The text calls do this on
 * first use of a code point. The caller releases bitmap and outline with free. With a null record
 * nothing happens.
 *
 * For a record inside the font's glyph data, nothing past that data is read: coded runs beyond its
 * end read as 0, and a record whose head of 8 bytes reaches past it gives an empty glyph. A record
 * anywhere else is the caller's own, and trusted: its head and (bit count + 7) / 8 bytes of coded
 * runs are read.
 */
ORN_MIN_RENDER_API void OrnMinRenderTextRenderCacheGlyph(const OrnMinRenderFont *font,
                                                         OrnMinRenderGlyph *glyph);

/* ------------------------------------------------------------------------------------------------
 * Text. Strings are zero-terminated UTF-8 in sequences of up to six bytes (RFC 2279). A malformed
 * lead byte or a sequence cut short ends the text. A code point outside the font shows the glyph of
 * code point 0. Code point 10 breaks the line: the pen returns to lineStart and moves on by the
 * font's line height. lineStart is an x coordinate for horizontal directions, and a y coordinate
 * for vertical ones. The pen is the caller's. On return it stands after the last glyph or break.
 * --------------------------------------------------------------------------------------------- */

/* Sets the writing direction. Any value but the four writes as Normal. A change empties the font's
 * glyph cache. */
ORN_MIN_RENDER_API void OrnMinRenderSetFontDirection(OrnMinRenderFont *font, int32_t direction);

/*
 * Measures a text. rect becomes the smallest rectangle (right and bottom exclusive) that holds the
 * starting pen point and the box of every glyph. The pen moves as drawing would move it. Outlines
 * reach up to 3 pixels further. No glyph is decoded. With a null rect or pen nothing happens. With
 * a null font or text, or an empty one, rect becomes the empty rectangle at the pen.
 */
ORN_MIN_RENDER_API void OrnMinRenderGetTextRect(OrnMinRenderContext *context,
                                                const OrnMinRenderFont *font, const char *text,
                                                OrnMinRenderPoint *pen, int32_t lineStart,
                                                OrnMinRenderRect *rect);

/*
 * Breaks a text into lines that fit a width in pixels. Returns a copy in which "\n- " stands before
 * every word that would carry its line past the width. Words are separated by spaces, tabs and line
 * feeds, and are never split. The extent of a word is that of its ink, from its first pen position
 * to its rightmost pixel. The advance beyond that and the width of the dash are not counted. Blanks
 * that follow a break are left out. Returns null for a null font, for a null or empty text, or when
 * memory is short. The caller releases the result with free. */
ORN_MIN_RENDER_API char *OrnMinRenderFixTextWidth(OrnMinRenderContext *context,
                                                  const OrnMinRenderFont *font, const char *text,
                                                  int32_t width);

/* Draws a text into the luma plane; chroma is left as it is. */
ORN_MIN_RENDER_API void OrnMinRenderDrawTextY8(OrnMinRenderContext *context,
                                               const OrnMinRenderImage *image,
                                               OrnMinRenderFont *font, const char *text,
                                               OrnMinRenderPoint *pen, int32_t lineStart,
                                               uint8_t luma);

/* Like OrnMinRenderDrawTextY8, with a band of two pixels around every glyph, in the luma outline.
 * The glyph itself has the low byte of fill. It lies over the band of the next glyph. */
ORN_MIN_RENDER_API void OrnMinRenderDrawOutlineTextY8(OrnMinRenderContext *context,
                                                      const OrnMinRenderImage *image,
                                                      OrnMinRenderFont *font, const char *text,
                                                      OrnMinRenderPoint *pen, int32_t lineStart,
                                                      uint8_t outline, int32_t fill);

/*
 * Draws a bitmap in the format of glyphs into the luma plane, clipped to the frame. Rows are
 * (width + 31) / 32 words, the least significant bit leftmost. Pixels of set bits take the low byte
 * of luma. words is the length of the bitmap. What lies past it counts as clear.
 */
ORN_MIN_RENDER_API void OrnMinRenderTextBitmap(const OrnMinRenderGlyphBox *box,
                                               const uint32_t *bitmap, uint32_t words,
                                               const OrnMinRenderImage *image,
                                               const OrnMinRenderPoint *pen, int32_t luma);

#ifdef __cplusplus
} /* extern "C" */

extern "C++" {

/* The colour conversions, to and from a colour record. They are templates, so that a literal null
 * pointer still calls the functions above. */
template <class Colour>
inline auto OrnMinRenderRGB2YUV(Colour *colour, const uint8_t *rgb)
    -> decltype(static_cast<void>(static_cast<OrnMinRenderColour *>(colour))) {
    OrnMinRenderRGB2YUV(reinterpret_cast<uint8_t *>(colour), rgb);
}

template <class Colour>
inline auto OrnMinRenderYUV2RGB(uint8_t *rgb, const Colour *colour)
    -> decltype(static_cast<void>(static_cast<const OrnMinRenderColour *>(colour))) {
    OrnMinRenderYUV2RGB(rgb, reinterpret_cast<const uint8_t *>(colour));
}

} /* extern "C++" */
#endif

#endif /* ORN_MIN_RENDER_H */
