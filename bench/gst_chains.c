// SPDX-License-Identifier: MIT
// Processor time that chains of GStreamer elements take for a frame of 1080 lines beyond
// identity's:
//   GST_PLUGIN_PATH=BUILD/gst gst_chains FONT.cbf >table.md
// The chains take turns and the least of each counts. A chain gets its own frame again and again,
// so that nothing is copied or made around it.
#include <cairo.h>
#include <gst/check/gstharness.h>
#include <gst/video/video.h>

#include <stdio.h>
#include <time.h>

enum {
    kTurns = 20,
    kFrames = 30,
    kBoxes = 20,
    kWidth = 1920,
    kHeight = 1080,
    kFramesPerSecond = 25
};

typedef struct {
    const char *name;
    const char *format;
    const char *launch;
    int boxes; // regions of interest that each frame has
    GstHarness *harness;
    GstBuffer *buffer;
    guint64 frame;
    double least; // seconds a frame
} Chain;

#define ORN(script) "ornoverlay font-location=\"%s\" script=\"" script "\""
#define TEXT "* label 40 40 white #203040 \\\"{time}\\\""
#define FOUR                                                                                       \
    TEXT "\n* label right-40 40 white #203040 \\\"frame {frame}\\\""                               \
         "\n* loop #ff4040 57%%,42%% 78%%,37%% 95%%,66%% 71%%,76%%\n* box 100 500 +300 +200 red"
#define BOXES                                                                                      \
    "tracks box box.left box.top box.right-1 box.bottom-1 id\n"                                    \
    "tracks label box.left box.top black id bottom \\\"car {id} {conf}\\\""
#define CAIRO                                                                                      \
    "videoconvert ! cairooverlay name=cairo ! videoconvert ! capsfilter "                          \
    "caps=video/x-raw,format=NV12"

static Chain chains[] = {
    {.name = "`identity`", .format = "NV12", .launch = "identity"},
    {.name = "`identity`, 20 regions", .format = "NV12", .launch = "identity", .boxes = kBoxes},
    {.name = "`ornoverlay`, nothing to draw", .format = "NV12", .launch = ORN("")},
    {.name = "`ornoverlay`, 1 text", .format = "NV12", .launch = ORN(TEXT)},
    {.name = "`ornoverlay`, 4 overlays", .format = "NV12", .launch = ORN(FOUR)},
    {.name = "`ornoverlay`, 20 labelled boxes",
     .format = "NV12",
     .launch = ORN(BOXES),
     .boxes = kBoxes},
    {.name = "`ornoverlay`, 1 text without chroma",
     .format = "I420",
     .launch = ORN("* outlined 40 40 white black \\\"{time}\\\"")},
    {.name = "`ornoverlay`, 1 text on a coloured background",
     .format = "I420",
     .launch = ORN(TEXT)},
    {.name = "`ornoverlay`, 20 labelled boxes",
     .format = "I420",
     .launch = ORN(BOXES),
     .boxes = kBoxes},
    {.name = "`ornoverlay`, 20 labelled boxes",
     .format = "NV21",
     .launch = ORN(BOXES),
     .boxes = kBoxes},
    {.name = "`textoverlay`, a still text",
     .format = "NV12",
     .launch = "textoverlay text=\"a still text\""},
    {.name = "`clockoverlay`", .format = "NV12", .launch = "clockoverlay"},
    {.name = "`timeoverlay`", .format = "NV12", .launch = "timeoverlay"},
    {.name = "`timeoverlay`", .format = "I420", .launch = "timeoverlay"},
    {.name = "`videoconvert ! cairooverlay ! videoconvert`, 20 labelled boxes",
     .format = "NV12",
     .launch = CAIRO},
};
enum { kChains = sizeof chains / sizeof *chains };

static int left_of(int box) {
    return 60 + box % 5 * 370;
}

static int top_of(int box) {
    return 100 + box / 5 * 250;
}

static void draw_with_cairo(GstElement *element, cairo_t *cr) {
    (void)element;
    cairo_select_font_face(cr, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD);
    cairo_set_font_size(cr, 24);
    cairo_set_line_width(cr, 2);
    for (int i = 0; i < kBoxes; ++i) {
        char text[64];
        snprintf(text, sizeof text, "car %d %.2f", i, 0.5 + i * 0.02);
        cairo_set_source_rgb(cr, 1, 0.6, 0);
        cairo_rectangle(cr, left_of(i), top_of(i), 200, 160);
        cairo_stroke(cr);
        cairo_rectangle(cr, left_of(i), top_of(i) - 34, 180, 34);
        cairo_fill(cr);
        cairo_set_source_rgb(cr, 0, 0, 0);
        cairo_move_to(cr, left_of(i) + 6, top_of(i) - 8);
        cairo_show_text(cr, text);
    }
}

static void add_region(GstBuffer *buffer, int i) {
    GstVideoRegionOfInterestMeta *region = gst_buffer_add_video_region_of_interest_meta(
        buffer, "car", (guint)left_of(i), (guint)top_of(i), 200, 160);
    gst_video_region_of_interest_meta_add_param(
        region, gst_structure_new("detection", "confidence", G_TYPE_DOUBLE, 0.5 + i * 0.02, NULL));
    gst_video_region_of_interest_meta_add_param(
        region, gst_structure_new("object_id", "id", G_TYPE_INT, i, NULL));
}

static GstBuffer *make_frame(const Chain *chain) {
    const gsize size = kWidth * kHeight * 3 / 2;
    GstBuffer *buffer = gst_buffer_new_allocate(NULL, size, NULL);
    gst_buffer_memset(buffer, 0, 100, size);
    gst_buffer_add_video_meta(buffer, GST_VIDEO_FRAME_FLAG_NONE,
                              gst_video_format_from_string(chain->format), kWidth, kHeight);
    for (int i = 0; i < chain->boxes; ++i)
        add_region(buffer, i);
    return buffer;
}

static void open_chain(Chain *chain, const char *font) {
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    gchar *launch = g_strdup_printf(chain->launch, font);
    gchar *caps = g_strdup_printf("video/x-raw,format=%s,width=%d,height=%d,framerate=%d/1",
                                  chain->format, kWidth, kHeight, kFramesPerSecond);
    chain->harness = gst_harness_new_parse(launch);
    gst_harness_set_src_caps_str(chain->harness, caps);
    GstElement *cairo = gst_harness_find_element(chain->harness, "cairooverlay");
    if (cairo) {
        g_signal_connect(cairo, "draw", G_CALLBACK(draw_with_cairo), NULL);
        gst_object_unref(cairo);
    }
    chain->buffer = make_frame(chain);
    chain->least = G_MAXDOUBLE;
    g_free(caps);
    g_free(launch);
}

static double processor_seconds(void) {
    struct timespec now;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return (double)now.tv_sec + 1e-9 * (double)now.tv_nsec;
}

static void take_turn(Chain *chain) {
    const double start = processor_seconds();
    for (int i = 0; i < kFrames; ++i) {
        GST_BUFFER_PTS(chain->buffer) = chain->frame++ * (GST_SECOND / kFramesPerSecond);
        gst_harness_push(chain->harness, chain->buffer);
        chain->buffer = gst_harness_pull(chain->harness);
    }
    chain->least = MIN(chain->least, (processor_seconds() - start) / kFrames);
}

int main(int argc, char **argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: %s FONT.cbf\n", argv[0]);
        return 2;
    }
    gst_init(NULL, NULL);
    for (int i = 0; i < kChains; ++i)
        open_chain(&chains[i], argv[1]);
    for (int turn = 0; turn < kTurns; ++turn)
        for (int i = 0; i < kChains; ++i)
            take_turn(&chains[i]);
    puts("| chain | layout | µs a frame |\n|---|---|--:|");
    for (int i = 2; i < kChains; ++i)
        printf("| %s | %s | %.1f |\n", chains[i].name, chains[i].format,
               1e6 * (chains[i].least - chains[chains[i].boxes ? 1 : 0].least));
    for (int i = 0; i < kChains; ++i) {
        gst_buffer_unref(chains[i].buffer);
        gst_harness_teardown(chains[i].harness);
    }
    return 0;
}
