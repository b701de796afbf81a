// SPDX-License-Identifier: MIT
// The element ornoverlay: a filter that draws into the frames that pass it.
#pragma once

#include <gst/gst.h>

GST_ELEMENT_REGISTER_DECLARE(ornoverlay)
