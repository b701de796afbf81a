// SPDX-License-Identifier: MIT
// Copies between frames, row by row, clipped to both.
#include "plane.h"

using namespace orn;

static void CopyRows(const Plane &to, const Plane &from, int64_t rows, size_t bytes) {
    const auto length = static_cast<int64_t>(bytes);
    if (to.stride == length && from.stride == length) { // no gap between the rows
        bytes *= static_cast<size_t>(rows);
        rows = 1;
    }
    for (int64_t row = 0; row < rows; ++row)
        memcpy(SampleAt(to, 0, row), SampleAt(from, 0, row), bytes);
}

void OrnMinRenderBltYUV420SP(const OrnMinRenderImage *image, OrnMinRenderRect rect,
                             const OrnMinRenderImage *source, OrnMinRenderPoint position) {
    if (!image || !source)
        return;
    // A start outside either image moves the start in the other one along.
    const int64_t outsideX = Max(0, Max(-int64_t{rect.left}, -int64_t{position.x}));
    const int64_t outsideY = Max(0, Max(-int64_t{rect.top}, -int64_t{position.y}));
    const int64_t x = rect.left + outsideX;
    const int64_t y = rect.top + outsideY;
    const int64_t sourceX = position.x + outsideX;
    const int64_t sourceY = position.y + outsideY;
    const int64_t width = Min(Min(image->width, rect.right) - x, source->width - sourceX);
    const int64_t height = Min(Min(image->height, rect.bottom) - y, source->height - sourceY);
    if (width <= 0 || height <= 0)
        return;
    const auto bytes = static_cast<size_t>(width);
    if (image->yPlane && source->yPlane)
        CopyRows(PlaneFrom(LumaPlane(image), x, y), PlaneFrom(LumaPlane(source), sourceX, sourceY),
                 height, bytes);
    // As many bytes, from the sample that holds the first pixel on; an odd last row has none.
    if (image->uvPlane && source->uvPlane)
        CopyRows(PlaneFrom(ChromaPlane(image), x / 2, y / 2),
                 PlaneFrom(ChromaPlane(source), sourceX / 2, sourceY / 2), height / 2, bytes);
}
