// SPDX-License-Identifier: MIT
// A film is made by two threads of ours, one that decodes and one that draws and encodes, beside
// those of the libraries.
#include "video.h"

#include "report.h"
#include "signals.h"
#include "target_file.h"
#include "video_painter.h"
#include "video_picture.h"

#include "common/output_file.h"
#include "common/streams.h"
#include "common/text.h"

#include <unistd.h>

namespace {

void CheckFiles(const Options &options) {
    if ((options.input == "-" && isatty(STDIN_FILENO)) ||
        (options.output == "-" && isatty(STDOUT_FILENO)))
        throw tool::Failure(
            tool::kBadUsage,
            "videos on standard input and output need pipes or files, not a terminal");
    if (options.output != "-")
        tool::CheckTarget(options.output, {options.input, options.scriptPath, options.fontPath,
                                           options.tracksPath});
}

FilmTarget TargetOf(const Options &options, const TargetFile &file) {
    FilmTarget target;
    target.name = options.output == "-" ? "standard output" : options.output;
    target.address = options.output == "-" ? "pipe:1" : "file:" + file.Path();
    target.encoder = options.encoder;
    target.options = options.encoderOptions;
    return target;
}

class FilmMaker {
  public:
    FilmMaker(Overlays &withOverlays, const Options &all)
        : overlays(withOverlays), options(all), report(options),
          file(options.output == "-" ? "" : options.output, options.keepPartial), clip(options),
          fitting(clip, options), film(clip, fitting.Shape(), TargetOf(options, file)) {
    }

    // Throws what went wrong; a film that is to be kept nevertheless is finished before.
    void Make() {
        overlays.Begin(fitting.Shape().frames);
        report.Expect(clip.Length());
        std::exception_ptr failure = Draw();
        if (!failure || file.KeepsPartial())
            Finish(failure);
        if (failure)
            std::rethrow_exception(failure);
        TellEnd();
    }

  private:
    // What went wrong, if anything did.
    std::exception_ptr Draw() {
        Painter painter(overlays, fitting.Shape().frames, film, report,
                        static_cast<size_t>(options.tracksDelay));
        try {
            while (std::optional<ClipItem> item = clip.Read()) {
                FramePtr &frame = item->picture.frame;
                if (frame)
                    frame = fitting.Fit(std::move(frame));
                if (!painter.Push(std::move(*item)))
                    break;
            }
        } catch (...) {
            painter.Finish();
            return std::current_exception();
        }
        return painter.Finish();
    }

    void Finish(std::exception_ptr &failure) {
        try {
            film.Finish();
        } catch (...) {
            if (!failure)
                failure = std::current_exception();
        }
        if (!failure || file.KeepsPartial())
            file.Publish();
    }

    void TellEnd() {
        if (StopRequested())
            tool::Say(kProgram, "note: interrupted: the film ends where the work was stopped");
        if (!clip.Damages().empty())
            tool::Say(kProgram, "note: " + clip.Damages());
        report.Finish(clip.Name());
    }

    Overlays &overlays;
    const Options &options;
    Report report;
    TargetFile file;
    Clip clip;
    Fitting fitting;
    Film film;
};

} // namespace

void DrawVideo(Overlays &overlays, const Options &options) {
    KeepLibraryMessages();
    CheckFiles(options);
    if (options.frame || options.sheet)
        MakePicture(overlays, options);
    else
        FilmMaker(overlays, options).Make();
}
