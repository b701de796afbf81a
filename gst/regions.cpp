// SPDX-License-Identifier: MIT
// A region's type is the class. What else detectors know of it they say in structures of its
// parameters: "detection" has a confidence, "object_id" has an id, in whatever type of number. The
// structures that newer versions of GStreamer have for it are read where they exist.
#include "regions.h"

#include <cmath>
#include <gst/video/video.h>
#include <optional>

#ifdef ORN_HAS_ANALYTICS
#include <gst/analytics/analytics.h>
#endif

namespace {

constexpr int64_t kNotTracked = -1;
constexpr double kMaxId = 4294967295.0;

std::optional<double> NumberOf(GstVideoRegionOfInterestMeta *region, const char *structure,
                               const char *field) {
    const GstStructure *found = gst_video_region_of_interest_meta_get_param(region, structure);
    const GValue *value = found ? gst_structure_get_value(found, field) : nullptr;
    GValue number = G_VALUE_INIT;
    g_value_init(&number, G_TYPE_DOUBLE);
    if (!value || !g_value_transform(value, &number))
        return std::nullopt;
    return g_value_get_double(&number);
}

int64_t IdOf(double number) {
    return std::fabs(number) <= kMaxId ? static_cast<int64_t>(number) : kNotTracked;
}

overlay::TrackedBox BoxOf(int64_t id, double left, double top, double width, double height,
                          double confidence, GQuark type) {
    const char *const name = g_quark_to_string(type);
    return {0, id, left, top, left + width, top + height, confidence, name ? name : ""};
}

#ifdef ORN_HAS_ANALYTICS
int64_t IdOf(const GstAnalyticsODMtd &object) {
    GstAnalyticsTrackingMtd track;
    guint64 id = 0;
    GstClockTime firstSeen = 0;
    GstClockTime lastSeen = 0;
    gboolean lost = FALSE;
    const bool tracked = gst_analytics_relation_meta_get_direct_related(
        object.meta, object.id, GST_ANALYTICS_REL_TYPE_ANY,
        gst_analytics_tracking_mtd_get_mtd_type(), nullptr, &track);
    if (!tracked || !gst_analytics_tracking_mtd_get_info(&track, &id, &firstSeen, &lastSeen, &lost))
        return kNotTracked;
    return IdOf(static_cast<double>(id));
}

void AddAnalytics(GstBuffer &buffer, std::vector<overlay::TrackedBox> &boxes) {
    GstAnalyticsRelationMeta *relations = gst_buffer_get_analytics_relation_meta(&buffer);
    GstAnalyticsODMtd object;
    gpointer state = nullptr;
    while (relations && gst_analytics_relation_meta_iterate(
                            relations, &state, gst_analytics_od_mtd_get_mtd_type(), &object)) {
        gint x = 0;
        gint y = 0;
        gint width = 0;
        gint height = 0;
        gfloat confidence = 0;
        if (gst_analytics_od_mtd_get_location(&object, &x, &y, &width, &height, &confidence))
            boxes.push_back(BoxOf(IdOf(object), x, y, width, height,
                                  static_cast<double>(confidence),
                                  gst_analytics_od_mtd_get_obj_type(&object)));
    }
}
#else
void AddAnalytics(GstBuffer &, std::vector<overlay::TrackedBox> &) {
}
#endif

} // namespace

void ReadRegions(GstBuffer &buffer, std::vector<overlay::TrackedBox> &boxes) {
    boxes.clear();
    gpointer state = nullptr;
    while (GstMeta *meta = gst_buffer_iterate_meta_filtered(
               &buffer, &state, GST_VIDEO_REGION_OF_INTEREST_META_API_TYPE)) {
        auto *region = reinterpret_cast<GstVideoRegionOfInterestMeta *>(meta);
        boxes.push_back(BoxOf(IdOf(NumberOf(region, "object_id", "id").value_or(kNotTracked)),
                              region->x, region->y, region->w, region->h,
                              NumberOf(region, "detection", "confidence").value_or(1),
                              region->roi_type));
    }
    AddAnalytics(buffer, boxes);
}
