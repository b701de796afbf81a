// SPDX-License-Identifier: MIT
// Frames are read from the first on, since their numbers are those of decoded frames.
#include "video_picture.h"

#include "picture.h"
#include "report.h"
#include "video_canvas.h"

#include "common/text.h"

#include <filesystem>
#include <vector>

namespace {

// Whether a moment lies before a frame, so that the frame before it is the one that is shown then.
bool IsBefore(const Moment &moment, const ClipFrame &frame) {
    return moment.number ? *moment.number < frame.number : moment.seconds < frame.Seconds();
}

std::vector<Moment> MomentsOf(const Options &options, const Clip &clip) {
    if (options.frame)
        return {*options.frame};
    if (clip.Length() <= 0)
        throw tool::Failure(tool::kBadData, clip.Name() +
                                                ": how long it lasts isn't known, so that "
                                                "no frames can be chosen for a sheet");
    std::vector<Moment> moments;
    const int count = options.sheet->columns * options.sheet->rows;
    for (int i = 0; i < count; ++i)
        moments.push_back({std::nullopt, clip.Length() * (i + 0.5) / count});
    return moments;
}

void CheckReached(const Options &options, const Clip &clip, const ClipFrame &last) {
    const std::string ends =
        tool::Format(": ends with frame %lld, at ", static_cast<long long>(last.number)) +
        ClockText(last.EndSeconds());
    const bool isReached =
        !options.frame || (options.frame->number ? *options.frame->number <= last.number
                                                 : options.frame->seconds < last.EndSeconds());
    if (!isReached)
        throw tool::Failure(tool::kBadData, clip.Name() + ends);
}

class PictureMaker {
  public:
    PictureMaker(Overlays &withOverlays, const Options &all)
        : overlays(withOverlays), options(all), clip(options), fitting(clip, options),
          canvas(fitting.Shape().frames, AV_PIX_FMT_NV12),
          picture(fitting.Shape(), options.sheet.value_or(Sheet())) {
    }

    void Make() {
        overlays.Begin(fitting.Shape().frames);
        const std::vector<Moment> moments = MomentsOf(options, clip);
        size_t done = 0;
        std::optional<ClipFrame> shown = clip.ReadFrame();
        while (done < moments.size()) {
            std::optional<ClipFrame> next = clip.ReadFrame();
            if (!next)
                CheckReached(options, clip, *shown);
            size_t upTo = done;
            while (upTo < moments.size() && (!next || IsBefore(moments[upTo], *next)))
                ++upTo;
            Add(*shown, upTo - done);
            done = upTo;
            shown = std::move(next);
        }
        picture.Write(options.output);
    }

  private:
    void Add(ClipFrame &shown, size_t times) {
        if (times == 0)
            return;
        const OrnMinRenderImage image = canvas.Place(fitting.Fit(std::move(shown.frame)));
        overlays.Draw(image, shown.number, shown.time);
        for (; times > 0; --times)
            picture.Add(image);
    }

    Overlays &overlays;
    const Options &options;
    Clip clip;
    Fitting fitting;
    VideoCanvas canvas;
    Picture picture;
};

} // namespace

void MakePicture(Overlays &overlays, const Options &options) {
    if (std::filesystem::path(options.output).extension() != ".png")
        throw tool::Failure(tool::kBadUsage,
                            options.output + ": a picture's name should end in .png");
    PictureMaker(overlays, options).Make();
}
