// SPDX-License-Identifier: MIT
// A PNG picture of frames: of one, or of some in columns and rows.
#pragma once

#include "video_fit.h"

#include <orn_min_render.h>

struct SwsContext;

struct SwsDestroyer {
    void operator()(SwsContext *scaler) const;
};

class Picture {
  public:
    // One frame keeps its size; a sheet of several is about as wide as a screen.
    Picture(const FilmShape &ofShape, const Sheet &ofSheet);

    // Into the next place, from left to right and downward. The image is NV12.
    void Add(const OrnMinRenderImage &image);
    bool IsFull() const {
        return count == sheet.columns * sheet.rows;
    }
    void Write(const std::string &path) const; // throws tool::Failure

  private:
    const overlay::FrameShape shape;
    const Sheet sheet;
    int tileWidth;
    int tileHeight;
    std::unique_ptr<SwsContext, SwsDestroyer> scaler;
    FramePtr pixels; // RGB
    int count = 0;
};
