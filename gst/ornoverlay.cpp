// SPDX-License-Identifier: MIT
// Properties may be set by any thread: they are kept under the object's lock, and the thread that
// brings the frames takes them over between two frames. It alone uses the drawing, but for start
// and stop, while it does not run. Exceptions end here.
#include "ornoverlay.h"

#include "drawing.h"
#include "frame_shape.h"

#include <gst/video/gstvideofilter.h>
#include <new>

GST_DEBUG_CATEGORY_STATIC(orn_overlay_debug);
#define GST_CAT_DEFAULT orn_overlay_debug

namespace {

constexpr guint kMaxGapFrames = 1000;      // as orn-overlay has it
constexpr size_t kMaxControlLines = 10000; // that wait, should no frame come

// Everything of the element that GObject does not allocate.
struct State {
    Wishes wishes; // under the object's lock
    std::optional<Drawing> drawing;
    bool hasDrawn = false; // a frame since the start
};

} // namespace

struct OrnOverlay {
    GstVideoFilter parent;
    State *state;
};

struct OrnOverlayClass {
    GstVideoFilterClass parent_class;
};

G_DEFINE_TYPE(OrnOverlay, orn_overlay, GST_TYPE_VIDEO_FILTER)

GST_ELEMENT_REGISTER_DEFINE(ornoverlay, "ornoverlay", GST_RANK_NONE, orn_overlay_get_type())

namespace {

enum Property : guint {
    kScriptLocation = 1,
    kScriptText,
    kFontLocation,
    kTracksLocation,
    kDrawRoi,
    kEnabled,
    kTracksFormat,
    kClassesLocation,
    kMaxGap,
    kStart,
    kUtc,
};

// Holds the object's lock while it lives.
class ObjectLock {
  public:
    explicit ObjectLock(OrnOverlay *self) : object(GST_OBJECT_CAST(self)) {
        GST_OBJECT_LOCK(object);
    }
    ~ObjectLock() {
        GST_OBJECT_UNLOCK(object);
    }
    ObjectLock(const ObjectLock &) = delete;
    ObjectLock &operator=(const ObjectLock &) = delete;

  private:
    GstObject *object;
};

OrnOverlay *SelfOf(void *instance) {
    return static_cast<OrnOverlay *>(instance);
}

std::string Summary(const Problems &problems) {
    std::string summary = problems.front();
    if (problems.size() > 1)
        summary += " (and " + std::to_string(problems.size() - 1) + " more)";
    return summary;
}

std::string Details(const Problems &problems) {
    std::string details;
    for (const std::string &problem : problems)
        details += problem + "\n";
    return details;
}

// True when there are none.
bool PostErrors(OrnOverlay *self, const Problems &problems) {
    if (!problems.empty())
        GST_ELEMENT_ERROR(self, RESOURCE, SETTINGS, ("%s", Summary(problems).c_str()),
                          ("%s", Details(problems).c_str()));
    return problems.empty();
}

void PostWarnings(OrnOverlay *self, const Problems &problems) {
    if (!problems.empty())
        GST_ELEMENT_WARNING(self, RESOURCE, SETTINGS, ("%s", Summary(problems).c_str()),
                            ("%s", Details(problems).c_str()));
}

void PostShortMemory(OrnOverlay *self) {
    GST_ELEMENT_ERROR(self, RESOURCE, NO_SPACE_LEFT, ("not enough memory"), (nullptr));
}

// What the user has set. None of it counts as changed from then on.
Wishes TakeWishes(OrnOverlay *self) {
    const ObjectLock lock(self);
    Wishes taken = self->state->wishes;
    self->state->wishes.changed = 0;
    self->state->wishes.controlLines.clear();
    return taken;
}

gboolean Start(GstBaseTransform *base) {
    OrnOverlay *self = SelfOf(base);
    State &state = *self->state;
    try {
        Wishes wishes = TakeWishes(self);
        wishes.changed = kAllInputs;
        state.hasDrawn = false;
        state.drawing.emplace();
        const bool isRight = PostErrors(self, state.drawing->Load(wishes));
        PostWarnings(self, state.drawing->TakeNotes());
        return isRight;
    } catch (const std::bad_alloc &) {
        PostShortMemory(self);
        return FALSE;
    }
}

gboolean Stop(GstBaseTransform *base) {
    SelfOf(base)->state->drawing.reset();
    return TRUE;
}

gboolean SetInfo(GstVideoFilter *filter, GstCaps *, GstVideoInfo *info, GstCaps *, GstVideoInfo *) {
    OrnOverlay *self = SelfOf(filter);
    try {
        const Problems problems = self->state->drawing->SetFrames(*info);
        if (!self->state->hasDrawn)
            return PostErrors(self, problems);
        PostWarnings(self, problems);
        return TRUE;
    } catch (const std::bad_alloc &) {
        PostShortMemory(self);
        return FALSE;
    }
}

gboolean SinkEvent(GstBaseTransform *base, GstEvent *event) {
    State &state = *SelfOf(base)->state;
    if (GST_EVENT_TYPE(event) == GST_EVENT_SEGMENT && state.drawing)
        state.drawing->Restart();
    return GST_BASE_TRANSFORM_CLASS(orn_overlay_parent_class)->sink_event(base, event);
}

// Controlled properties have the values of this frame then.
void SyncProperties(GstBaseTransform *base, GstBuffer *buffer) {
    const GstClockTime time =
        gst_segment_to_stream_time(&base->segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
    if (GST_CLOCK_TIME_IS_VALID(time))
        gst_object_sync_values(GST_OBJECT_CAST(base), time);
}

Switches CurrentSwitches(OrnOverlay *self, bool &changed) {
    const ObjectLock lock(self);
    changed = self->state->wishes.changed != 0;
    return self->state->wishes.switches;
}

// Every frame comes here first, also one that is dropped to keep up. A frame that nothing is drawn
// into passes as it is: it need not be made writable.
void BeforeTransform(GstBaseTransform *base, GstBuffer *buffer) {
    OrnOverlay *self = SelfOf(base);
    Drawing &drawing = *self->state->drawing;
    try {
        if (base->segment.format == GST_FORMAT_TIME)
            SyncProperties(base, buffer);
        bool changed = false;
        const Switches switches = CurrentSwitches(self, changed);
        if (changed)
            PostWarnings(self, drawing.Load(TakeWishes(self)));
        const bool draws = drawing.Begin(*buffer, base->segment, switches);
        const bool passes = GST_VIDEO_FILTER(base)->negotiated && !draws;
        if (passes != (gst_base_transform_is_passthrough(base) != FALSE))
            gst_base_transform_set_passthrough(base, passes);
    } catch (const std::bad_alloc &) {
        PostShortMemory(self);
    }
}

GstFlowReturn TransformFrame(GstVideoFilter *filter, GstVideoFrame *frame) {
    OrnOverlay *self = SelfOf(filter);
    self->state->hasDrawn = true;
    try {
        self->state->drawing->Draw(*frame);
        PostWarnings(self, self->state->drawing->TakeNotes());
        return GST_FLOW_OK;
    } catch (const overlay::Failure &failure) {
        GST_ELEMENT_ERROR(self, RESOURCE, READ, ("%s", failure.what()), (nullptr));
    } catch (const std::bad_alloc &) {
        PostShortMemory(self);
    }
    return GST_FLOW_ERROR;
}

std::string TextOf(const GValue *value) {
    const gchar *text = g_value_get_string(value);
    return text ? text : "";
}

void SetProperty(GObject *object, guint id, const GValue *value, GParamSpec *spec) {
    OrnOverlay *self = SelfOf(object);
    const ObjectLock lock(self);
    Wishes &wishes = self->state->wishes;
    const auto take = [&wishes, value](std::string &text, Inputs input) {
        text = TextOf(value);
        wishes.changed |= input;
    };
    switch (id) {
    case kScriptLocation:
        return take(wishes.scriptLocation, kScript);
    case kScriptText:
        wishes.script.reset();
        if (g_value_get_string(value))
            wishes.script = TextOf(value);
        wishes.changed |= kScript;
        break;
    case kFontLocation:
        return take(wishes.fontLocation, kFont);
    case kTracksLocation:
        return take(wishes.tracksLocation, kTracks);
    case kTracksFormat:
        return take(wishes.tracksFormat, kTracks);
    case kClassesLocation:
        return take(wishes.classesLocation, kTracks);
    case kMaxGap:
        wishes.maxGap = g_value_get_uint(value);
        wishes.changed |= kTracks;
        break;
    case kStart:
        return take(wishes.start, kClock);
    case kUtc:
        wishes.utc = g_value_get_boolean(value) != FALSE;
        wishes.changed |= kClock;
        break;
    case kDrawRoi:
        wishes.switches.drawRegions = g_value_get_boolean(value) != FALSE;
        break;
    case kEnabled:
        wishes.switches.enabled = g_value_get_boolean(value) != FALSE;
        break;
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
    }
}

void GiveText(GValue *value, const std::string &text) {
    g_value_set_string(value, text.empty() ? nullptr : text.c_str());
}

void GetProperty(GObject *object, guint id, GValue *value, GParamSpec *spec) {
    OrnOverlay *self = SelfOf(object);
    const ObjectLock lock(self);
    const Wishes &wishes = self->state->wishes;
    switch (id) {
    case kScriptLocation:
        return GiveText(value, wishes.scriptLocation);
    case kScriptText:
        return g_value_set_string(value, wishes.script ? wishes.script->c_str() : nullptr);
    case kFontLocation:
        return GiveText(value, wishes.fontLocation);
    case kTracksLocation:
        return GiveText(value, wishes.tracksLocation);
    case kTracksFormat:
        return GiveText(value, wishes.tracksFormat);
    case kClassesLocation:
        return GiveText(value, wishes.classesLocation);
    case kMaxGap:
        return g_value_set_uint(value, static_cast<guint>(wishes.maxGap));
    case kStart:
        return GiveText(value, wishes.start);
    case kUtc:
        return g_value_set_boolean(value, wishes.utc);
    case kDrawRoi:
        return g_value_set_boolean(value, wishes.switches.drawRegions);
    case kEnabled:
        return g_value_set_boolean(value, wishes.switches.enabled);
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
    }
}

void Control(OrnOverlay *self, const gchar *line) {
    const ObjectLock lock(self);
    Wishes &wishes = self->state->wishes;
    if (!line || wishes.controlLines.size() == kMaxControlLines)
        return;
    wishes.controlLines.emplace_back(line);
    wishes.changed |= kControl;
}

void Finalise(GObject *object) {
    delete SelfOf(object)->state;
    G_OBJECT_CLASS(orn_overlay_parent_class)->finalize(object);
}

constexpr auto kFlags = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS |
                                                 GST_PARAM_MUTABLE_PLAYING);
constexpr auto kSwitchFlags = static_cast<GParamFlags>(kFlags | GST_PARAM_CONTROLLABLE);

void AddText(GObjectClass *object, guint id, const char *name, const char *nick,
             const char *blurb) {
    g_object_class_install_property(object, id,
                                    g_param_spec_string(name, nick, blurb, nullptr, kFlags));
}

void AddSwitch(GObjectClass *object, guint id, const char *name, const char *nick,
               const char *blurb) {
    g_object_class_install_property(object, id,
                                    g_param_spec_boolean(name, nick, blurb, TRUE, kSwitchFlags));
}

void AddProperties(GObjectClass *object) {
    AddText(object, kScriptLocation, "script-location", "Script file",
            "File of the script: one overlay a line, as FRAMES COMMAND ARGUMENTS, for example "
            "* label 8 8 white black \"{time}\" (orn-overlay --help has all of the language). "
            "Without any script, boxes are drawn for regions and tracks");
    AddText(object, kScriptText, "script", "Script",
            "Text of the script, in place of the file. A wrong one, set while frames flow, leaves "
            "the script as it was and posts a warning with line and reason");
    AddText(object, kFontLocation, "font-location", "Font",
            "CBF font (cbfconv makes them), or the name of an installed set such as sans, of texts "
            "for which the script names none");
    AddText(object, kTracksLocation, "tracks-location", "Tracks file",
            "Tracked boxes for the lines of 'tracks' in the script, in a file of any format that "
            "orn-overlay reads, such as rows of frame,id,left,top,width,height,confidence. Frame 1 "
            "is the first of the segment");
    AddText(object, kTracksFormat, "tracks-format", "Format of the tracks",
            "mot, jsonl, yolo, coco or csv, where the file doesn't show it");
    AddText(object, kClassesLocation, "classes-location", "Names of classes",
            "File with a name a line, for tracks that have numbers of classes; the first is that "
            "of class 0");
    g_object_class_install_property(
        object, kMaxGap,
        g_param_spec_uint("max-gap", "Largest gap",
                          "Draw a box between two of an id at most so many frames apart", 0,
                          kMaxGapFrames, 0, kFlags));
    AddText(object, kStart, "start", "Start of the clock",
            "Time such as 2026-11-23T14:05:09Z with which {clock} begins; otherwise it shows the "
            "time of day");
    g_object_class_install_property(
        object, kUtc,
        g_param_spec_boolean("utc", "UTC", "Show {clock} in UTC, not in the time of this place",
                             FALSE, kFlags));
    AddSwitch(object, kDrawRoi, "draw-roi", "Draw regions of interest",
              "Draw the lines of 'tracks' in the script for the frame's regions of interest, too: "
              "{class} is the region's type, {conf} is 'confidence' of the structure 'detection', "
              "{id} is 'id' of 'object_id'");
    AddSwitch(object, kEnabled, "enabled", "Enabled",
              "Draw; otherwise frames pass as they are, and are counted");
}

// "set NAME LINE" or "clear NAME", to be done before the next frame; what is wrong is posted then.
void AddSignals(GType type) {
    g_signal_new_class_handler(
        "control", type, static_cast<GSignalFlags>(G_SIGNAL_RUN_LAST | G_SIGNAL_ACTION),
        G_CALLBACK(Control), nullptr, nullptr, nullptr, G_TYPE_NONE, 1, G_TYPE_STRING);
}

void AddPads(GstElementClass *element) {
    const GstPadDirection directions[] = {GST_PAD_SINK, GST_PAD_SRC};
    GstCaps *caps = gst_caps_from_string(ORN_VIDEO_CAPS);
    for (const GstPadDirection direction : directions)
        gst_element_class_add_pad_template(
            element, gst_pad_template_new(direction == GST_PAD_SINK ? "sink" : "src", direction,
                                          GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);
}

} // namespace

static void orn_overlay_class_init(OrnOverlayClass *klass) {
    GObjectClass *object = G_OBJECT_CLASS(klass);
    object->set_property = SetProperty;
    object->get_property = GetProperty;
    object->finalize = Finalise;
    AddProperties(object);
    AddSignals(G_TYPE_FROM_CLASS(klass));

    GstElementClass *element = GST_ELEMENT_CLASS(klass);
    gst_element_class_set_static_metadata(
        element, "Overlay burner", "Filter/Editor/Video",
        "Burns the boxes, shapes, pictures and texts of a script straight into the frames",
        "liborn_min_render");
    AddPads(element);

    GstBaseTransformClass *transform = GST_BASE_TRANSFORM_CLASS(klass);
    transform->start = Start;
    transform->stop = Stop;
    transform->sink_event = SinkEvent;
    transform->before_transform = BeforeTransform;
    transform->transform_ip_on_passthrough = FALSE;
    GST_VIDEO_FILTER_CLASS(klass)->set_info = SetInfo;
    GST_VIDEO_FILTER_CLASS(klass)->transform_frame_ip = TransformFrame;
    GST_DEBUG_CATEGORY_INIT(orn_overlay_debug, "ornoverlay", 0, "overlays burnt into frames");
}

static void orn_overlay_init(OrnOverlay *self) {
    self->state = new State;
}
