// SPDX-License-Identifier: MIT
// Holds what was set, and puts it together for every frame.
#include "engine.h"

#include "canvas.h"
#include "commands.h"
#include "control.h"
#include "draw_text.h"
#include "layer.h"
#include "placeholders.h"
#include "script.h"
#include "words.h"

#include <algorithm>
#include <new>
#include <set>

namespace overlay {

namespace {

constexpr int32_t kAssumedHeight = 1080; // of frames, while nothing is known of them

constexpr size_t kNamedLines = size_t{1}
                               << 24; // no script has so many: overlays set by name come after
constexpr size_t kMaxNames = 1000;    // of control lines: what they set stays in memory

using Context = std::unique_ptr<OrnMinRenderContext, decltype(&OrnMinRenderDestroyContext)>;

void Append(Errors &errors, const Errors &others) {
    errors.insert(errors.end(), others.begin(), others.end());
}

} // namespace

struct Engine::State {
    explicit State(const Settings &all) : settings(all) {
    }

    bool KnowsFrames() const {
        return canvas.shape.width > 0;
    }
    ScriptInputs InputsOf(const std::string &file) const;
    void SetLine(const ControlLine &line, const std::string &file);
    void ClearLine(std::string_view name);
    void ScaleTracks();
    void DrawLayer(Layer &layer, int64_t number);

    Settings settings;
    FontChoice font;
    FontStore fonts;       // of that choice alone: those of a script live with its overlays
    Layer script;          // in the order of its lines
    FontChoice scriptFont; // at the end of the script, and so for control lines
    FontStore scriptFonts;
    Layer named;                    // by control lines, in the order in which they came
    std::vector<std::string> names; // of these
    size_t namesSoFar = 0;
    Context context{OrnMinRenderCreateContext(), OrnMinRenderDestroyContext};
    Canvas canvas;
    bool toldRepeat = false; // of an id, among the boxes of a frame
    bool tracksInShares = false;
};

void Engine::State::ScaleTracks() {
    if (tracksInShares)
        canvas.tracks.SetScale(canvas.shape.width, canvas.shape.height);
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

void Engine::SetClock(const ClockSettings &clock) {
    state->canvas.clock = clock;
}

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

// Names of files count from the folder of the file that names them.
ScriptInputs Engine::State::InputsOf(const std::string &file) const {
    ScriptInputs inputs{settings.names,
                        font,
                        fonts,
                        settings.hasTracks,
                        KnowsFrames() ? canvas.shape.height : kAssumedHeight,
                        {std::filesystem::path(file).parent_path(),
                         settings.hasChroma,
                         settings.decodePicture,
                         {}}};
    if (KnowsFrames()) {
        inputs.files.hasChroma = canvas.shape.hasChroma;
        inputs.files.frameHeight = canvas.shape.height;
    }
    return inputs;
}

Errors Engine::SetScript(std::string_view content, const std::string &file) {
    Errors errors;
    ParsedScript parsed = ParseScript(content, file, state->InputsOf(file), errors);
    if (!errors.empty())
        return errors;
    Layer script{file, std::move(parsed.overlays), {}};
    script.Retime();
    if (state->KnowsFrames())
        script.MixColours(state->canvas.shape.colours);
    state->script = std::move(script);
    state->scriptFont = std::move(parsed.font);
    state->scriptFonts = std::move(parsed.fonts);
    state->canvas.labelPlaces = LabelPlaces(); // lines may be others now
    state->canvas.gaps = {};
    state->canvas.notes.Forget();
    for (const Overlay &overlay : state->script.overlays)
        if (overlay.font)
            NoteGaps(state->canvas, overlay, FixedPartsOf(overlay));
    return {};
}

void Engine::State::SetLine(const ControlLine &line, const std::string &file) {
    ScriptInputs inputs = InputsOf(file);
    inputs.files.folder = std::filesystem::path(script.file).parent_path();
    if (scriptFont) {
        inputs.font = scriptFont;
        inputs.fonts = scriptFonts;
    }
    ParsedScript parsed = ParseLine(*line.line, inputs);
    scriptFonts = std::move(parsed.fonts);
    const auto place =
        static_cast<size_t>(std::find(names.begin(), names.end(), line.name) - names.begin());
    if (place == kMaxNames)
        throw Failure("there are " + std::to_string(kMaxNames) + " names already");
    if (place == names.size()) {
        named.overlays.emplace_back().line = kNamedLines + ++namesSoFar;
        names.emplace_back(line.name);
    }
    parsed.overlays.front().line = named.overlays[place].line; // labels know their places by it
    named.overlays[place] = std::move(parsed.overlays.front());
    if (KnowsFrames())
        MixColours(named.overlays[place], canvas.shape.colours);
    named.Retime();
}

void Engine::State::ClearLine(std::string_view name) {
    const auto place = std::find(names.begin(), names.end(), name);
    if (place == names.end())
        throw Failure("there is no " + Quoted(name) + " to clear");
    named.overlays.erase(named.overlays.begin() + (place - names.begin()));
    names.erase(place);
    named.Retime();
}

Errors Engine::Control(std::string_view text, const std::string &file, size_t number) {
    Errors errors;
    ParseLines(text, file, errors, [&](std::string_view line, size_t) {
        const ControlLine control = ParseControlLine(line);
        if (control.line)
            state->SetLine(control, file);
        else
            state->ClearLine(control.name);
    });
    for (Error &error : errors)
        error.line = number;
    return errors;
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
    Errors errors;
    for (Layer *layer : {&state->script, &state->named}) {
        Append(errors, layer->OpenPictures(shape));
        layer->MixColours(shape.colours); // of pictures as they are scaled now
        Append(errors, layer->ChooseFonts(shape.height));
    }
    return errors;
}

std::vector<std::string> Engine::FontFiles() const {
    std::set<std::string> files;
    const int32_t height = state->KnowsFrames() ? state->canvas.shape.height : kAssumedHeight;
    for (const Overlay &overlay : state->script.overlays)
        if (overlay.fontChoice)
            files.insert(overlay.fontChoice.PathFor(height));
    return {files.begin(), files.end()};
}

Planes Engine::Touches(int64_t number) {
    Canvas &canvas = state->canvas;
    const bool hasBoxes = !canvas.tracks.At(number).empty() || !canvas.live.At(number).empty();
    Planes planes = Planes::None;
    if (!state->KnowsFrames())
        return planes;
    for (Layer *layer : {&state->script, &state->named})
        for (const size_t i : layer->timeline.At(number)) {
            const Overlay &overlay = layer->overlays[i];
            if (!overlay.perBox || hasBoxes)
                planes = std::max(planes, overlay.planes);
        }
    return planes;
}

// Labels of tracked boxes wait until all of the boxes are drawn.
void Engine::State::DrawLayer(Layer &layer, int64_t number) {
    const std::vector<size_t> &shown = layer.timeline.At(number);
    const auto isPerBox = [&layer](size_t i) { return layer.overlays[i].perBox; };
    const auto afterBoxes = std::find_if(shown.rbegin(), shown.rend(), isPerBox).base();
    for (auto i = shown.begin(); i != shown.end(); ++i) {
        if (i == afterBoxes)
            DrawWaitingLabels(canvas);
        DrawOverlay(canvas, layer.overlays[*i]);
    }
    DrawWaitingLabels(canvas);
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
    state->DrawLayer(state->script, number);
    state->DrawLayer(state->named, number);
}

const std::vector<OrnMinRenderRect> &Engine::Labels() const {
    return state->canvas.labelPlaces.Labels();
}

Errors Engine::TakeNotes() {
    Errors notes = state->canvas.notes.Take();
    for (Error &note : notes) {
        if (note.line > kNamedLines)
            note = {"a control line", 0, note.reason};
        else if (note.file.empty())
            note.file = state->script.file;
    }
    return notes;
}

std::string Engine::Help(const InputNames &names) {
    return ScriptHelp(names);
}

} // namespace overlay
