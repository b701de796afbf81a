// Shapes, each reduced to lines, blocks or span lists. What stands here is for tests of the
// internals.
#pragma once

#include "orn_min_render.h"

// Orders crossing points by row, then by column: negative, zero or positive as for qsort.
int ComparePoints(const void *first, const void *second);

// Sorts the crossing points of one plane into the order of ComparePoints, in place. At most
// kScratchPoints points, and every row from the lowest to the highest must hold at least two.
void SortCrossings(OrnMinRenderPoint *points, size_t count);
