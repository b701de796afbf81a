// SPDX-License-Identifier: MIT
// Pixels that come from elsewhere. None of these calls of the library takes a context.
#include "draw_pictures.h"

namespace overlay {

void DrawBitmap(Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderRect rect = Corners(canvas);
    const Bitmap &bitmap = overlay.bitmap;
    const auto draw = overlay.halfTransparent ? OrnMinRenderDrawBitmapSemiTransparentYUV420SP
                                              : OrnMinRenderDrawBitmapYUV420SP;
    draw(&canvas.image, &rect, bitmap.width, bitmap.height, bitmap.words.data(),
         ColourFor(canvas, overlay.paints[0]));
}

// The first frame of its line shows the first of a file of frames.
void DrawPicture(Canvas &canvas, const Overlay &overlay) {
    if (overlay.still) {
        if (const Still *still = overlay.still->Scaled())
            still->Draw(canvas.image, PointAt(canvas, 0));
        return;
    }
    const OrnMinRenderImage *source =
        overlay.picture->FrameAt(canvas.frameNumber - overlay.frames.first);
    const OrnMinRenderPoint corner = PointAt(canvas, 0);
    const OrnMinRenderPoint size = PointAt(canvas, 2);
    const OrnMinRenderRect rect{corner.x, corner.y, Saturated(int64_t{corner.x} + size.x),
                                Saturated(int64_t{corner.y} + size.y)};
    if (source)
        OrnMinRenderBltYUV420SP(&canvas.image, rect, source, {0, 0});
}

// By way of the spare frame, since a copy within one frame may overlap itself.
void DrawCopy(Canvas &canvas, const Overlay &) {
    if (!canvas.spare)
        canvas.spare.emplace(canvas.shape);
    const OrnMinRenderImage spare = canvas.spare->Image();
    OrnMinRenderBltYUV420SP(&spare, canvas.surroundings.frame, &canvas.image, {0, 0});
    OrnMinRenderBltYUV420SP(&canvas.image, Corners(canvas), &spare, PointAt(canvas, 4));
}

} // namespace overlay
