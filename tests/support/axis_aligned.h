// SPDX-License-Identifier: MIT
// Axis-aligned lines and filled rectangles pixel by pixel: what must be ink.
#pragma once

#include "frame.h"

#include <algorithm>

inline bool Dash(Int along, Int style, Int bit) {
    return style == 0 || (style == 1 && (along & bit));
}

// Half-open, ordered and clamped.
struct Interval {
    Int first, end;
    Interval(Int a, Int b, Int size)
        : first(std::clamp<Int>(std::min(a, b), 0, size)),
          end(std::clamp<Int>(std::max(a, b), 0, size)) {
    }
    bool Has(Int v) const {
        return v >= first && v < end;
    }
    bool HasHalved(Int v) const {
        return v >= first / 2 && v < end / 2;
    }
};

inline Predicate HLine(Int w, Int h, Int x0, Int x1, Int y, Int style, bool chromaLine) {
    const Interval columns(x0, x1, w);
    const bool oneRow = style == 1 && !chromaLine;
    return {[=](Int px, Int py) {
                return (py == y || (py == y + 1 && !oneRow)) && columns.Has(px) &&
                       Dash(px, style, 8);
            },
            [=](Int cx, Int cy) {
                return chromaLine && y >= 0 && y < h && cy == y / 2 && columns.HasHalved(cx) &&
                       Dash(cx, style, 4);
            }};
}

inline Predicate VLine(Int w, Int h, Int x, Int y0, Int y1, Int style, bool chromaLine) {
    const bool visible = x >= 0 && x < w - 1 && (chromaLine || y0 < y1);
    const Interval rows(y0, y1, h);
    return {[=](Int px, Int py) {
                return visible && (px == x || px == x + 1) && rows.Has(py) && Dash(py, style, 8);
            },
            [=](Int cx, Int cy) {
                return chromaLine && visible && cx == x / 2 && rows.HasHalved(cy) &&
                       Dash(cy, style, 4);
            }};
}

// Chroma samples are painted that hold a painted pixel.
inline Predicate FilledRect(Int w, Int h, const OrnMinRenderRect &rect) {
    const Interval columns(rect.left, rect.right, w), rows(rect.top, rect.bottom, h);
    const auto filled = [=](Int x, Int y) { return columns.Has(x) && rows.Has(y); };
    return {filled, [=](Int cx, Int cy) {
                return filled(2 * cx, 2 * cy) || filled(2 * cx + 1, 2 * cy) ||
                       filled(2 * cx, 2 * cy + 1) || filled(2 * cx + 1, 2 * cy + 1);
            }};
}
