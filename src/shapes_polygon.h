// SPDX-License-Identifier: MIT
// The crossings of polygons with the rows of a plane, for tests of the internals.
#pragma once

#include "orn_min_render.h"

namespace orn {

// Orders crossing points by row, then by column: negative, zero or positive as for qsort.
int ComparePoints(const void *first, const void *second);

// Lists where the polygon's edges cross the rows of one plane (shift 0: luma, 1: chroma), in the
// order of ComparePoints: two points make a span. Returns their number; 0 when there are none, or
// when the polygon is one that leaves the plane alone.
int32_t FillPolygonPlane(OrnMinRenderPoint *crossings, const OrnMinRenderImage *image,
                         const OrnMinRenderPoint *points, size_t count, int32_t shift);

} // namespace orn
