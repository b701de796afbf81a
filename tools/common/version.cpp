// SPDX-License-Identifier: MIT
// The version stands in the public header and nowhere else.
#include "common/version.h"

#include "common/text.h"
#include "orn_min_render.h"

namespace tool {

std::string VersionText(const std::string &program) {
    return program + Format(" %d.%d.%d", ORN_MIN_RENDER_VERSION_MAJOR, ORN_MIN_RENDER_VERSION_MINOR,
                            ORN_MIN_RENDER_VERSION_PATCH);
}

} // namespace tool
