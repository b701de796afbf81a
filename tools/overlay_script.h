// Scripts of orn-overlay: text to overlays, one a line, and the order in which frames need them.
#pragma once

#include "overlay_colour.h"
#include "overlay_draw.h"
#include "overlay_frame.h"
#include "overlay_words.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

// What a script needs to know of the command line.
struct ScriptSettings {
    std::string fontPath; // until the script names another; empty: none
    bool hasTracks = false;
    ColourSpace colours;
    FrameShape shape;
    std::filesystem::path folder; // from which it names files
};

struct Script {
    std::vector<Overlay> overlays; // in the order of the lines
    FileErrors errors;
};

// Reads a whole script, and the pictures and fonts that it names. A line that can't be understood
// gives an error in place of an overlay, and so does what needs a font, tracks or a size that is
// not there.
Script ParseScript(std::string_view content, const ScriptSettings &settings, FontStore &fonts);

// What shows tracked boxes when the script says nothing of them: their outlines, and labels if
// there is a font.
std::string_view TrackScript(bool hasFont);

// The commands and colours of the script, as --help shows them.
std::string ScriptHelp();

// Walks through the frames from 0 on and knows the overlays of each without looking at the others:
// work per frame depends on the overlays that start, are shown or end there.
class Timeline {
  public:
    explicit Timeline(const std::vector<Overlay> &overlays); // which must outlive the timeline

    // The overlays of a frame as positions in the list, in its order. Frames are asked for one
    // after the other.
    const std::vector<size_t> &Advance(int64_t frame);

  private:
    void Start(int64_t frame);

    const std::vector<Overlay> &overlays;
    std::vector<size_t> byStart; // by first frame, then in the order of the list
    size_t nextStart = 0;
    std::vector<size_t> active;
};
