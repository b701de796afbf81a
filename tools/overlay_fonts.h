// The fonts of a script: each file once for each direction in use, since turning a font empties its
// glyph cache.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <orn_min_render.h>
#include <string>
#include <utility>

using Font = std::shared_ptr<OrnMinRenderFont>;

class FontStore {
  public:
    // Throws Failure.
    Font Get(const std::string &path, int32_t direction);

  private:
    std::map<std::pair<std::string, int32_t>, Font> fonts;
};
