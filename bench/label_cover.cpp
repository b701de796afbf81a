// SPDX-License-Identifier: MIT
// How far labels cover each other over all frames of a table of tracks, and what avoiding that
// costs: label_cover FONT SCRIPT TRACKS WIDTH HEIGHT FRAMES. Each is told for the script with all
// labels fixed, and as it is. Fails unless the latter keep to what is promised of them.
#include "overlay/engine.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>

namespace {

constexpr double kMaxShare = 0.1; // of a label that another one covers
constexpr double kMaxCost = 2;    // times that of fixed labels

std::string ReadFile(const char *path) {
    std::ostringstream content;
    content << std::ifstream(path).rdbuf();
    return content.str();
}

// Before the strings of all labels of tracks.
std::string WithFixedLabels(const std::string &script) {
    std::istringstream lines(script);
    std::string line, fixed;
    while (std::getline(lines, line)) {
        if (line.rfind("tracks label", 0) == 0)
            line.insert(line.find('"'), "fixed ");
        fixed += line + "\n";
    }
    return fixed;
}

struct Film {
    overlay::Engine engine{{{}, true, true}};
    int32_t width;
    int32_t height;
    std::vector<uint8_t> bytes;

    Film(const char *font, const std::string &script, const std::string &tracks, int32_t ofWidth,
         int32_t ofHeight)
        : width(ofWidth), height(ofHeight), bytes(size_t(width) * size_t(height) * 2) {
        overlay::TrackSettings settings;
        settings.maxGap = 5;
        overlay::Errors errors = engine.SetFont(font);
        for (const overlay::Errors &more :
             {engine.SetScript(script, "script"), engine.SetTracks({{tracks, "tracks"}}, settings),
              engine.SetFrames({width, height, true, {}})})
            errors.insert(errors.end(), more.begin(), more.end());
        for (const overlay::Error &error : errors)
            std::fprintf(stderr, "label_cover: %s\n", error.Message().c_str());
        if (!errors.empty())
            std::exit(1);
    }

    void Draw(int64_t number) {
        uint8_t *const chroma = bytes.data() + size_t(width) * size_t(height);
        engine.Draw({0, width, height, width, bytes.data(), 0, chroma}, number, {number, 25});
    }
};

// The largest part of a label of the frame that another one covers.
double LargestShare(const std::vector<OrnMinRenderRect> &labels) {
    double largest = 0;
    const auto area = [](const OrnMinRenderRect &r) {
        return double(std::max(0, r.right - r.left)) * std::max(0, r.bottom - r.top);
    };
    for (const OrnMinRenderRect &a : labels)
        for (const OrnMinRenderRect &b : labels) {
            const OrnMinRenderRect both{std::max(a.left, b.left), std::max(a.top, b.top),
                                        std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
            if (&a != &b && area(a) > 0)
                largest = std::max(largest, area(both) / area(a));
        }
    return largest;
}

// Prints a row, and returns the frames with a label that is covered by more than is promised.
int TellCover(const char *name, Film film, int64_t frames) {
    int byTenth = 0, byThird = 0;
    double largest = 0;
    for (int64_t number = 0; number < frames; ++number) {
        film.Draw(number);
        const double share = LargestShare(film.engine.Labels());
        byTenth += share > kMaxShare;
        byThird += share >= 1.0 / 3;
        largest = std::max(largest, share);
    }
    std::printf("%-22s %6d %6d %5.0f %%\n", name, byThird, byTenth, 100 * largest);
    return byTenth;
}

// Twenty people who walk to and fro in a part of a frame of 720 rows.
std::string Walkers(int frames, int width, int height) {
    std::mt19937 random(1);
    std::string rows;
    for (int id = 1; id <= 20; ++id) {
        const int x = static_cast<int>(random() % unsigned(width));
        const int y = static_cast<int>(random() % unsigned(height));
        for (int frame = 1; frame <= frames; ++frame)
            rows += std::to_string(frame) + "," + std::to_string(id) + "," +
                    std::to_string((x + frame * (id % 5)) % width) + "," + std::to_string(y) +
                    ",48,110\n";
    }
    return rows;
}

double SecondsFor(Film &film, int frames) {
    const auto start = std::chrono::steady_clock::now();
    for (int number = 0; number < frames; ++number)
        film.Draw(number);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// In turn, and the shortest of many, so that other work on the machine matters little.
double CostOfAvoiding(const char *font, int ofWidth, int ofHeight) {
    constexpr int kFrames = 50;
    const std::string script = "tracks box box.left box.top box.right-1 box.bottom-1 id\n"
                               "tracks label box.left box.top black id bottom \"person {id}\"\n";
    const std::string tracks = Walkers(kFrames, ofWidth, ofHeight);
    Film fixed(font, WithFixedLabels(script), tracks, 1280, 720);
    Film avoiding(font, script, tracks, 1280, 720);
    double fixedTime = 1e9, avoidingTime = 1e9;
    for (int turn = 0; turn < 30; ++turn) {
        fixedTime = std::min(fixedTime, SecondsFor(fixed, kFrames));
        avoidingTime = std::min(avoidingTime, SecondsFor(avoiding, kFrames));
    }
    return avoidingTime / fixedTime;
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 7) {
        std::fprintf(stderr, "usage: label_cover FONT SCRIPT TRACKS WIDTH HEIGHT FRAMES\n");
        return 2;
    }
    const std::string script = ReadFile(argv[2]), tracks = ReadFile(argv[3]);
    const int32_t width = std::atoi(argv[4]), height = std::atoi(argv[5]);
    const int64_t frames = std::atoi(argv[6]);
    std::printf("frames with a label        >=1/3  >1/10   most\n");
    TellCover("fixed", Film(argv[1], WithFixedLabels(script), tracks, width, height), frames);
    const int bad = TellCover("avoid", Film(argv[1], script, tracks, width, height), frames);
    const double apart = CostOfAvoiding(argv[1], 1200, 600);
    const double crowd = CostOfAvoiding(argv[1], 400, 200);
    std::printf("20 boxes take %.2f times as long as with fixed labels, in a crowd %.2f times\n",
                apart, crowd);
    return bad > 0 || std::max(apart, crowd) > kMaxCost ? 1 : 0;
}
