// SPDX-License-Identifier: MIT
// Holds what was set, and puts it together for every frame.
#include "engine.h"

#include "canvas.h"
#include "colour.h"
#include "commands.h"
#include "draw_text.h"
#include "placeholders.h"
#include "script.h"
#include "timeline.h"

#include <algorithm>
#include <new>

namespace overlay {

namespace {

constexpr int32_t kAssumedHeight = 1080; // of frames, while nothing is known of them

using Context = std::unique_ptr<OrnMinRenderContext, decltype(&OrnMinRenderDestroyContext)>;

Timeline TimelineOf(const std::vector<Overlay> &overlays) {
    std::vector<FrameRange> ranges;
    for (const Overlay &overlay : overlays)
        ranges.push_back(overlay.frames);
    return Timeline(std::move(ranges));
}

} // namespace

struct Engine::State {
    explicit State(const Settings &all) : settings(all) {
    }

    bool KnowsFrames() const {
        return canvas.shape.width > 0;
    }
    void MixColours();
    Errors OpenPictures();
    Errors ChooseFonts();
    void ScaleTracks();

    Settings settings;
    FontChoice font;
    FontStore fonts; // of that choice alone: those of a script live with its overlays
    std::string scriptFile;
    std::vector<Overlay> overlays; // in the order of the script's lines
    Timeline timeline;
    Context context{OrnMinRenderCreateContext(), OrnMinRenderDestroyContext};
    Canvas canvas;
    bool toldRepeat = false; // of an id, among the boxes of a frame
    bool tracksInShares = false;
};

void Engine::State::MixColours() {
    for (Overlay &overlay : overlays) {
        for (Paint &paint : overlay.paints)
            paint.colour = ColourOf(paint.rgb, canvas.shape.colours);
        if (overlay.still && KnowsFrames())
            overlay.still->Mix(canvas.shape.colours);
    }
}

void Engine::State::ScaleTracks() {
    if (tracksInShares)
        canvas.tracks.SetScale(canvas.shape.width, canvas.shape.height);
}

Errors Engine::State::OpenPictures() {
    Errors errors;
    for (const Overlay &overlay : overlays) {
        try {
            if (overlay.picture)
                overlay.picture->Open(canvas.shape.hasChroma);
        } catch (const Failure &failure) {
            errors.push_back({scriptFile, overlay.line, failure.what()});
        }
    }
    return errors;
}

Errors Engine::State::ChooseFonts() {
    Errors errors;
    FontStore loaded;
    for (Overlay &overlay : overlays) {
        try {
            if (overlay.fontChoice.FollowsFrames())
                overlay.font = loaded.Get(overlay.fontChoice.PathFor(canvas.shape.height),
                                          overlay.textStyle.direction);
        } catch (const Failure &failure) {
            errors.push_back({scriptFile, overlay.line, failure.what()});
        }
    }
    return errors;
}

Engine::Engine(const Settings &settings) : state(std::make_unique<State>(settings)) {
    if (!state->context)
        throw std::bad_alloc();
    state->canvas.context = state->context.get();
    state->canvas.clock = settings.clock;
}

Engine::~Engine() = default;
Engine::Engine(Engine &&other) noexcept = default;
Engine &Engine::operator=(Engine &&other) noexcept = default;

Errors Engine::SetFont(const std::string &name) {
    FontStore fonts;
    FontChoice font;
    try {
        font = FontChoice(name, {}, std::nullopt);
        fonts.Get(font.PathFor(0), OrnMinRenderTextDirection::Normal);
    } catch (const FileFailure &failure) {
        return {{failure.path, 0, failure.reason}};
    }
    state->fonts = std::move(fonts);
    state->font = std::move(font);
    return {};
}

Errors Engine::SetScript(std::string_view content, const std::string &file) {
    ScriptInputs inputs{state->settings.names,
                        state->font,
                        state->fonts,
                        state->settings.hasTracks,
                        state->KnowsFrames() ? state->canvas.shape.height : kAssumedHeight,
                        {std::filesystem::path(file).parent_path(), state->settings.hasChroma,
                         state->settings.decodePicture}};
    if (state->KnowsFrames())
        inputs.files.hasChroma = state->canvas.shape.hasChroma;
    Errors errors;
    std::vector<Overlay> overlays = ParseScript(content, file, inputs, errors);
    if (!errors.empty())
        return errors;
    Timeline timeline = TimelineOf(overlays); // which fits no other script, if memory is short here
    state->scriptFile = file;
    state->overlays = std::move(overlays);
    state->timeline = std::move(timeline);
    state->canvas.labelPlaces = LabelPlaces(); // lines may be others now
    state->MixColours();
    state->canvas.gaps = {};
    state->canvas.notes.Forget();
    for (const Overlay &overlay : state->overlays)
        if (overlay.font)
            NoteGaps(state->canvas, overlay, FixedPartsOf(overlay));
    return {};
}

Errors Engine::SetTracks(const std::vector<TrackFile> &files, const TrackSettings &settings) {
    Errors errors;
    ParsedTracks parsed = ParseTracks(files, settings, state->settings.names, errors);
    if (!errors.empty())
        return errors;
    for (const TrackedBox &box : parsed.boxes)
        state->canvas.classColours.Add(box.className);
    state->canvas.tracks = Tracks(std::move(parsed.boxes), settings.maxGap);
    state->tracksInShares = parsed.inShares;
    state->ScaleTracks();
    const std::string repeats = state->canvas.tracks.Repeats(settings.firstFrame.value_or(1));
    if (!repeats.empty())
        state->canvas.notes.Add(files[0].name, 0, repeats);
    return errors;
}

void Engine::SetBoxes(int64_t number, const std::vector<TrackedBox> &boxes) {
    for (const TrackedBox &box : boxes)
        state->canvas.classColours.Add(box.className);
    state->canvas.live.Append(number, boxes);
    if (!state->toldRepeat && state->canvas.live.HasRepeat(number)) {
        state->canvas.notes.Add("tracked boxes", 0,
                                "frame " + std::to_string(number) + " has two of one id");
        state->toldRepeat = true;
    }
}

Errors Engine::SetFrames(const FrameShape &shape) {
    state->canvas.shape = shape;
    state->canvas.palette = MakePalette(shape.colours);
    state->canvas.spare.reset();
    state->ScaleTracks();
    state->MixColours();
    Errors errors = state->OpenPictures();
    const Errors ofFonts = state->ChooseFonts();
    errors.insert(errors.end(), ofFonts.begin(), ofFonts.end());
    return errors;
}

Planes Engine::Touches(int64_t number) {
    Canvas &canvas = state->canvas;
    const bool hasBoxes = !canvas.tracks.At(number).empty() || !canvas.live.At(number).empty();
    Planes planes = Planes::None;
    if (!state->KnowsFrames())
        return planes;
    for (const size_t i : state->timeline.At(number)) {
        const Overlay &overlay = state->overlays[i];
        if (!overlay.perBox || hasBoxes)
            planes = std::max(planes, overlay.planes);
    }
    return planes;
}

void Engine::Draw(const OrnMinRenderImage &image, int64_t number, const FrameTime &time) {
    if (!state->KnowsFrames())
        return;
    Canvas &canvas = state->canvas;
    canvas.image = image;
    canvas.frameNumber = number;
    canvas.time = time;
    canvas.clockTime = ClockTime(canvas.clock, time);
    canvas.frameRate.Add(canvas.clockTime);
    canvas.surroundings = {{0, 0, canvas.shape.width, canvas.shape.height}, {}, {}};
    canvas.labelPlaces.BeginFrame(number, canvas.shape.width, canvas.shape.height);
    canvas.waitingLabels.clear(); // those of a frame that ended with an exception
    const std::vector<size_t> &shown = state->timeline.At(number);
    const auto isPerBox = [this](size_t i) { return state->overlays[i].perBox; };
    const auto afterBoxes = std::find_if(shown.rbegin(), shown.rend(), isPerBox).base();
    for (auto i = shown.begin(); i != shown.end(); ++i) {
        if (i == afterBoxes)
            DrawWaitingLabels(canvas);
        DrawOverlay(canvas, state->overlays[*i]);
    }
    DrawWaitingLabels(canvas);
}

const std::vector<OrnMinRenderRect> &Engine::Labels() const {
    return state->canvas.labelPlaces.Labels();
}

Errors Engine::TakeNotes() {
    Errors notes = state->canvas.notes.Take();
    for (Error &note : notes)
        if (note.file.empty())
            note.file = state->scriptFile;
    return notes;
}

std::string Engine::Help(const InputNames &names) {
    return ScriptHelp(names);
}

} // namespace overlay
