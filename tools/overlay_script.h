// Scripts of orn-overlay: text to overlays, one a line, and the order in which frames need them.
#pragma once

#include "overlay_draw.h"

#include <string>
#include <string_view>
#include <vector>

struct ScriptError {
    size_t line; // from 1
    std::string reason;
};

struct Script {
    std::vector<Overlay> overlays; // in the order of the lines
    std::vector<ScriptError> errors;
    bool complete = true; // false: reading stopped at the last of too many errors
};

// Reads a whole script, and the pictures that it names. A line that can't be understood gives an
// error in place of an overlay, and so does text when there is no font.
Script ParseScript(std::string_view content, bool hasFont);

// The whole content of a file. Throws std::system_error.
std::string ReadFile(const std::string &path);

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
