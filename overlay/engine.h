// SPDX-License-Identifier: MIT
// The engine of overlays: draws what a script says into frames in memory. It knows nothing of where
// frames come from or go to, prints nothing, and reads only the fonts and pictures that a script
// names. This header is all that a client has to include:
//
//     overlay::Settings settings;
//     overlay::Engine engine(settings);
//     engine.SetFont("sans.cbf");                            // each returns what is wrong
//     engine.SetScript("* label 8 8 white black \"{time}\"", "script");
//     engine.SetFrames({1920, 1080, true, {}});              // as soon as that is known
//     engine.Draw(image, frameNumber, {frameNumber, 25});    // for every frame
#pragma once

#include "clock.h"
#include "frame.h"
#include "live_boxes.h"
#include "messages.h"
#include "still.h"
#include "track_lines.h"

#include <memory>

namespace overlay {

struct Settings {
    InputNames names; // for messages

    // There will be tracked boxes: scripts may have lines for them, and one that has none gets
    // lines that show them.
    bool hasTracks = false;

    // Whether frames will have chroma, if that is known by now. A picture of a script (raw frames
    // with nothing before them) is checked with the script then, otherwise by SetFrames.
    std::optional<bool> hasChroma;

    ClockSettings clock = {}; // of texts

    // Reads PNG and JPEG files for a script: DecodePicture of ffmpeg_pictures.h, for example.
    // Without one, a script that names such a file is wrong.
    PictureDecoder decodePicture = {};
};

// Serves one thread at a time; separate engines share nothing. What the Set... functions are given
// is copied. They return all that is wrong with it, in the order of the lines, and nothing if all
// is right. They may be called again between two frames, in any order. All functions may throw
// std::bad_alloc.
class Engine {
  public:
    explicit Engine(const Settings &settings);
    ~Engine();
    Engine(Engine &&other) noexcept;
    Engine &operator=(Engine &&other) noexcept;

    // In place of the one of the settings.
    void SetClock(const ClockSettings &clock);

    // Loads the font of texts for which a script names none: a file, or the name of an installed
    // set. Holds for scripts that are set after it. With an error, the font stays what it was.
    Errors SetFont(const std::string &name);

    // Takes a script and loads what it names; file is what messages call it, and names of files
    // count from its folder. With an error, the script stays what it was. An empty script is one,
    // too: with tracks, it shows them.
    Errors SetScript(std::string_view content, const std::string &file);

    // Takes "set NAME LINE", which draws another line of a script, upon the script's own, and takes
    // the place of what the name stood for; or "clear NAME". Texts have the font that the script
    // ends with. file and number are what messages call the line. With an error, nothing changes.
    Errors Control(std::string_view line, const std::string &file, size_t number);

    // Takes the tracked boxes of all frames, from one file or, in YOLO's way, from one a frame.
    // With an error, the boxes stay what they were.
    Errors SetTracks(const std::vector<TrackFile> &files, const TrackSettings &settings);

    // Takes the tracked boxes that come with frame number (from a TrackStream, for example),
    // besides those of SetTracks. Trails find those of earlier frames, up to LiveBoxes::kKeptFrames
    // back; those of later ones are forgotten.
    void SetBoxes(int64_t number, const std::vector<TrackedBox> &boxes);

    // Takes the shape of the frames that follow. Errors tell of pictures that hold no frames with
    // or without chroma as these; such a picture is left out, and all else is drawn. So is one
    // whose size follows the height, if it can't be read any more or becomes too large. They tell
    // of fonts, too, that should replace others in frames of this height and can't be loaded.
    Errors SetFrames(const FrameShape &shape);

    // The files of the fonts that texts of the script have, each once.
    std::vector<std::string> FontFiles() const;

    // What Draw may change in frame number.
    Planes Touches(int64_t number);

    // Draws the overlays of frame number (from 0; any order, but one after the other is fastest)
    // into the caller's image, which has the shape that SetFrames was told; a missing plane is
    // skipped. Nothing else is read, written or kept of it. Before SetFrames, draws nothing. Throws
    // Failure when a picture can't be read any more.
    void Draw(const OrnMinRenderImage &image, int64_t number, const FrameTime &time);

    // What is no error, but may not be what was meant, since the last call: characters that a font
    // lacks (of a text that changes, once they are to be drawn), two boxes of one id in a frame.
    // Each is told once.
    Errors TakeNotes();
    // Where the labels and paragraphs of the frame that was drawn last lie, up to 256 of them.
    const std::vector<OrnMinRenderRect> &Labels() const;

    // The language of scripts in one screen. Ends without a line feed.
    static std::string Help(const InputNames &names);

  private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace overlay
