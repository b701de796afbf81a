// SPDX-License-Identifier: MIT
// The element ornoverlay between two pads: what each property does and when, and which buffers it
// leaves alone. Frames are 8 x 4 pixels of luma, at first all 9, at 10 a second. What it draws is
// compared with orn-overlay's frames in gst_test.py.
#include <atomic>
#include <cstdlib>
#include <fstream>
#include <gst/check/gstharness.h>
#include <gst/video/video.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>

namespace {

constexpr char kCaps[] = "video/x-raw,format=GRAY8,width=8,height=4,framerate=10/1";
constexpr GstClockTime kStep = GST_SECOND / 10;
constexpr guint8 kBefore = 9;

struct Unref {
    void operator()(GstBuffer *buffer) const {
        gst_buffer_unref(buffer);
    }
};
using Buffer = std::unique_ptr<GstBuffer, Unref>;

Buffer MakeBuffer(int64_t frame, gsize size = 32) {
    GstBuffer *buffer = gst_buffer_new_allocate(nullptr, size, nullptr);
    gst_buffer_memset(buffer, 0, kBefore, size);
    GST_BUFFER_PTS(buffer) = static_cast<GstClockTime>(frame) * kStep;
    return Buffer(buffer);
}

guint8 ByteAt(const Buffer &buffer, gsize offset) {
    guint8 byte = 0;
    EXPECT_TRUE(buffer && gst_buffer_extract(buffer.get(), offset, &byte, 1) == 1);
    return byte;
}

// Columns of the first row that were drawn, as "0 3".
std::string Drawn(const Buffer &buffer) {
    std::string drawn;
    for (gsize x = 0; x < 8; ++x)
        if (ByteAt(buffer, x) != kBefore)
            drawn += (drawn.empty() ? "" : " ") + std::to_string(x);
    return drawn;
}

// A line that fills column x of row 0.
std::string Fill(const std::string &frames, int x) {
    return frames + " fill " + std::to_string(x) + " 0 +1 1 white\n";
}

struct File {
    std::string path = "/tmp/ornoverlay_XXXXXX";
    explicit File(const std::string &content) {
        const int descriptor = mkstemp(path.data());
        EXPECT_GE(descriptor, 0);
        close(descriptor);
        std::ofstream(path) << content;
    }
    ~File() {
        std::remove(path.c_str());
    }
};

// The element, with a bus of its own.
struct Element {
    GstHarness *harness = nullptr;
    GstElement *element = gst_element_factory_make("ornoverlay", nullptr);
    GstBus *bus = gst_bus_new();

    template <typename... Properties> explicit Element(Properties... properties) {
        gst_object_ref_sink(element);
        gst_element_set_bus(element, bus);
        Set(properties...);
    }
    ~Element() {
        if (harness)
            gst_harness_teardown(harness);
        gst_element_set_state(element, GST_STATE_NULL);
        gst_element_set_bus(element, nullptr);
        gst_object_unref(bus);
        gst_object_unref(element);
    }
    template <typename... Properties> void Set(Properties... properties) {
        if constexpr (sizeof...(properties) > 0)
            g_object_set(element, properties..., nullptr);
    }
    void Play(const char *caps = kCaps) {
        harness = gst_harness_new_with_element(element, "sink", "src");
        gst_harness_set_src_caps_str(harness, caps);
    }
    Buffer Pass(Buffer buffer) {
        EXPECT_EQ(gst_harness_push(harness, buffer.release()), GST_FLOW_OK);
        return Buffer(gst_harness_pull(harness));
    }
    std::string DrawnIn(int64_t frame) {
        return Drawn(Pass(MakeBuffer(frame)));
    }
    // What the next message of the type says; "" if there is none.
    std::string Told(GstMessageType type) {
        GstMessage *message = gst_bus_pop_filtered(bus, type);
        if (!message)
            return "";
        GError *error = nullptr;
        type == GST_MESSAGE_ERROR ? gst_message_parse_error(message, &error, nullptr)
                                  : gst_message_parse_warning(message, &error, nullptr);
        const std::string text = error->message;
        EXPECT_TRUE(g_error_matches(error, GST_RESOURCE_ERROR, GST_RESOURCE_ERROR_SETTINGS));
        g_error_free(error);
        gst_message_unref(message);
        return text;
    }
};

void AddRegion(const Buffer &buffer, guint x) {
    gst_buffer_add_video_region_of_interest_meta(buffer.get(), "car", x, 0, 1, 1);
}

} // namespace

TEST(Gst, Properties) {
    const File script(Fill("*", 1)), tracks("1,1,2,0,1,1\n2,1,3,0,1,1\n");
    Element made("script-location", script.path.c_str(), "tracks-location", tracks.path.c_str());
    made.Play();
    EXPECT_EQ(made.DrawnIn(0), "1 2 3"); // a script without lines of tracks shows their boxes
    made.Set("script", (Fill("*", 5) + "tracks fill box.left 0 +1 1 id").c_str());
    EXPECT_EQ(made.DrawnIn(1), "3 5");
    made.Set("script", Fill("2-", 6).c_str(), "tracks-location", nullptr);
    EXPECT_EQ(made.DrawnIn(2), "6");
    made.Set("enabled", FALSE);
    EXPECT_EQ(made.DrawnIn(3), "");
    made.Set("enabled", TRUE, "script", nullptr); // the file again
    EXPECT_EQ(made.DrawnIn(4), "1");
    const auto passRegion = [&made](int64_t frame) {
        Buffer buffer = MakeBuffer(frame);
        AddRegion(buffer, 6);
        return Drawn(made.Pass(std::move(buffer)));
    };
    EXPECT_EQ(passRegion(5), "1 5 6 7"); // a frame of lines two pixels thick
    made.Set("draw-roi", FALSE);
    EXPECT_EQ(passRegion(6), "1");
    made.Set("script", ("# wrong\n" + Fill("*", 0) + "* blob\n* blub").c_str());
    EXPECT_EQ(made.DrawnIn(7), "1");
    EXPECT_EQ(made.Told(GST_MESSAGE_WARNING), "script:3: unknown command 'blob' (and 1 more)");
    EXPECT_EQ(made.DrawnIn(8), "1");
    EXPECT_EQ(made.Told(GST_MESSAGE_WARNING), ""); // it is told once
    const auto control = [&made](const std::string &line) {
        g_signal_emit_by_name(made.element, "control", line.c_str());
    };
    control("set a " + Fill("*", 7));
    control("set b " + Fill("*", 4));
    control("set a " + Fill("*", 3));
    EXPECT_EQ(made.DrawnIn(9), "1 3 4");
    control("clear b");
    control("clear c");
    EXPECT_EQ(made.DrawnIn(10), "1 3");
    EXPECT_EQ(made.Told(GST_MESSAGE_WARNING), "control: there is no 'c' to clear");
    gchar *text = nullptr;
    g_object_get(made.element, "script-location", &text, nullptr);
    EXPECT_EQ(text, script.path);
    g_free(text);
}

TEST(Gst, BadFilesStopItBeforeTheFirstFrame) {
    const File wrong("\n* blob\n"), none("");
    const std::string cases[][3] = {
        {"script", "* text 0 0 red \"x\"",
         "script:1: 'text' needs a font: name one by font-location or in a line before, "
         "or install the package orn-min-render-fonts"},
        {"script-location", wrong.path, wrong.path + ":2: unknown command 'blob'"},
        {"font-location", wrong.path,
         wrong.path + ": not a CBF font, or cut short (cbfdump --check tells more)"},
        {"tracks-location", "/nowhere",
         "Failed to open file “/nowhere”: No such file or directory"},
    };
    for (const auto &[property, value, told] : cases) {
        Element made(property.c_str(), value.c_str());
        EXPECT_EQ(gst_element_set_state(made.element, GST_STATE_PAUSED), GST_STATE_CHANGE_FAILURE);
        EXPECT_EQ(made.Told(GST_MESSAGE_ERROR), told);
        made.Set(property.c_str(), nullptr); // and then it starts
        EXPECT_NE(gst_element_set_state(made.element, GST_STATE_PAUSED), GST_STATE_CHANGE_FAILURE);
    }
}

TEST(Gst, TracksAndClockAsInTheProgram) {
    const File tracks("1,1,2,0,1,1,1,7,1\n3,1,4,0,1,1,1,7,1\n"), classes("7: car\n");
    Element made("tracks-location", tracks.path.c_str(), "tracks-format", "mot", "classes-location",
                 classes.path.c_str());
    made.Set("max-gap", 2u, "script", "tracks class=car fill box.left 0 +1 1 white");
    made.Play();
    EXPECT_EQ(made.DrawnIn(0), "2");
    EXPECT_EQ(made.DrawnIn(1), "3"); // between two rows
    made.Set("max-gap", 0u, "classes-location", nullptr);
    EXPECT_EQ(made.DrawnIn(2), ""); // the class is 7 again
    made.Set("tracks-format", "blob", "start", "tomorrow");
    EXPECT_EQ(made.DrawnIn(3), "");
    EXPECT_EQ(made.Told(GST_MESSAGE_WARNING),
              "tracks-format is mot, jsonl, yolo, coco or csv, not blob (and 1 more)");
}

TEST(Gst, CapsChange) {
    const File picture("abcdef"); // 2 x 2 pixels with chroma; no frames without
    const std::string script =
        "* fill right-1 0 right 1 white\n* picture 0 0 2 2 \"" + picture.path + "\"";
    const std::string told = "script:2: " + picture.path + ": its 6 bytes are no whole frames of 4";
    constexpr char kNv12[] = "video/x-raw,format=NV12,width=4,height=4,framerate=10/1";
    Element made("script", script.c_str());
    made.Play(kNv12);
    for (const char *caps : {kNv12, kCaps, kNv12}) {
        gst_harness_set_src_caps_str(made.harness, caps);
        const bool gray = caps == kCaps;
        const Buffer buffer = made.Pass(MakeBuffer(0, 32)); // of the same size
        EXPECT_EQ(Drawn(buffer), gray ? "7" : "0 1 3 4 5");
        EXPECT_EQ(made.Told(GST_MESSAGE_WARNING), gray ? told : "");
    }
    Element early("script", script.c_str());
    early.Play(kCaps);
    EXPECT_EQ(gst_harness_push(early.harness, MakeBuffer(0).release()), GST_FLOW_NOT_NEGOTIATED);
    EXPECT_EQ(early.Told(GST_MESSAGE_ERROR), told);
}

// Numbers begin anew with a segment, and missing frames have theirs.
TEST(Gst, FlushSeekAndGaps) {
    Element made(
        "script",
        (Fill("0", 0) + Fill("1", 1) + Fill("2", 2) + Fill("5", 5) + Fill("20", 6)).c_str());
    made.Play();
    EXPECT_EQ(made.DrawnIn(70), "0");
    EXPECT_EQ(made.DrawnIn(71), "1");
    EXPECT_EQ(made.DrawnIn(75), "5");
    gst_harness_push_event(made.harness, gst_event_new_flush_start());
    gst_harness_push_event(made.harness, gst_event_new_flush_stop(TRUE));
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    segment.start = segment.time = 20 * kStep;
    gst_harness_push_event(made.harness, gst_event_new_segment(&segment));
    EXPECT_EQ(made.DrawnIn(20), "0");
    EXPECT_EQ(made.DrawnIn(20), "1"); // a time stamp that stands still is a frame, too
    Buffer untimed = MakeBuffer(0);
    GST_BUFFER_PTS(untimed.get()) = GST_CLOCK_TIME_NONE;
    EXPECT_EQ(Drawn(made.Pass(std::move(untimed))), "2");
    // One that comes too late is dropped, and has its number.
    made.DrawnIn(23);
    gst_harness_push_upstream_event(
        made.harness, gst_event_new_qos(GST_QOS_TYPE_UNDERFLOW, 2.0, 10 * kStep, 4 * kStep));
    EXPECT_EQ(gst_harness_push(made.harness, MakeBuffer(24).release()), GST_FLOW_OK);
    EXPECT_EQ(gst_harness_try_pull(made.harness), nullptr);
    EXPECT_EQ(made.DrawnIn(40), "6");
}

// What nothing is drawn into is passed on, and what others hold is left as it is.
TEST(Gst, Buffers) {
    Element made("script", Fill("1-", 4).c_str());
    made.Play();
    const auto pass = [&made](const Buffer &shared) {
        return made.Pass(Buffer(gst_buffer_ref(shared.get())));
    };
    const Buffer first = MakeBuffer(0), second = MakeBuffer(1);
    EXPECT_EQ(pass(first), first);
    const Buffer drawn = pass(second);
    EXPECT_EQ(Drawn(drawn) + "," + Drawn(second), "4,");
    Buffer own = MakeBuffer(2);
    const GstBuffer *address = own.get();
    EXPECT_EQ(made.Pass(std::move(own)).get(), address);
    Buffer blocks = MakeBuffer(3, 4);
    gst_buffer_append(blocks.get(), MakeBuffer(3, 28).release());
    EXPECT_EQ(gst_buffer_n_memory(blocks.get()), 2u);
    EXPECT_EQ(Drawn(made.Pass(std::move(blocks))), "4");
}

// Scripts, right and wrong ones, and states change while frames flow.
TEST(Gst, Soak) {
    std::atomic<bool> over{false};
    for (int round = 0; round < 5; ++round) {
        Element made("script", Fill("*", 0).c_str());
        made.Play();
        over = false;
        std::thread setter([&made, &over] {
            for (int i = 0; !over; ++i) {
                made.Set("script", (i % 3 == 0 ? "* blob" : Fill("*", i % 2)).c_str());
                made.Set("draw-roi", i % 2, "tracks-location", nullptr);
                if (i % 3 == 0)
                    made.Told(GST_MESSAGE_WARNING);
            }
        });
        for (int frame = 0; frame < 3000; ++frame) {
            Buffer buffer = MakeBuffer(frame);
            AddRegion(buffer, 7);
            const std::string drawn = Drawn(made.Pass(std::move(buffer)));
            EXPECT_TRUE(drawn[0] == '0' || drawn[0] == '1') << drawn;
        }
        over = true;
        setter.join();
        gst_bus_set_flushing(made.bus, TRUE);
    }
}

int main(int argc, char **argv) {
    gst_init(&argc, &argv);
    testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    gst_deinit(); // after which the tracer of leaks tells
    return result;
}
