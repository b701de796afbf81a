// SPDX-License-Identifier: MIT
// What makes the module a plugin of GStreamer: it has one element.
#include "ornoverlay.h"

#include <orn_min_render.h>

#define PACKAGE "orn_min_render"
#define TEXT_OF(number) #number
#define DOTTED(major, minor, patch) TEXT_OF(major) "." TEXT_OF(minor) "." TEXT_OF(patch)

namespace {

gboolean Initialise(GstPlugin *plugin) {
    return GST_ELEMENT_REGISTER(ornoverlay, plugin);
}

} // namespace

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, orn,
                  "Overlays burnt straight into video frames", Initialise,
                  DOTTED(ORN_MIN_RENDER_VERSION_MAJOR, ORN_MIN_RENDER_VERSION_MINOR,
                         ORN_MIN_RENDER_VERSION_PATCH),
                  "MIT/X11", PACKAGE, "https://gstreamer.freedesktop.org")
