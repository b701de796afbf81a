// SPDX-License-Identifier: MIT
// The floor: the bytes that the library changes, stored again without asking what they are. A
// drawing of the library is recorded as runs of one colour; those that are stored in the same way,
// by memset, a wide pattern or one or two short words, are stored one after the other. Blits are
// memcpy.
#include "jobs.h"

#include <cstring>
#include <memory>

namespace bench {

namespace {

struct Run {
    int32_t offset; // from the byte of the place
    int32_t bytes;
    int32_t count = 1; // of such runs
    int32_t pitch = 0; // from one to the next
};

constexpr int kPattern = 64; // bytes that are stored at once at most

// The runs of one colour that are stored in one way.
struct Group {
    void (*store)(uint8_t *base, const Group &group);
    uint8_t pattern[kPattern];
    std::vector<Run> runs;
};
using Groups = std::vector<Group>;
using Store = decltype(Group::store);

// ---- Storing ----

template <class Store> void ForEachRun(uint8_t *base, const Group &group, Store store) {
    const Run *end = group.runs.data() + group.runs.size();
    for (const Run *run = group.runs.data(); run < end; ++run) {
        const Run copy = *run; // not to be read again after each store
        uint8_t *to = base + copy.offset;
        for (int32_t i = 0; i < copy.count; ++i, to += copy.pitch)
            store(to, copy.bytes);
    }
}

template <int kBytes> struct Word {
    uint8_t bytes[kBytes];

    explicit Word(const Group &group) {
        memcpy(bytes, group.pattern, kBytes);
    }
    void Store(uint8_t *to) const {
        memcpy(to, bytes, kBytes);
    }
};

template <int kBytes> void StoreOnce(uint8_t *base, const Group &group) {
    ForEachRun(base, group, [word = Word<kBytes>(group)](uint8_t *to, int32_t) { word.Store(to); });
}

template <int kBytes> void StoreTwice(uint8_t *base, const Group &group) {
    ForEachRun(base, group, [word = Word<kBytes>(group)](uint8_t *to, int32_t bytes) {
        word.Store(to);
        word.Store(to + bytes - kBytes);
    });
}

void StoreMany(uint8_t *base, const Group &group) {
    ForEachRun(base, group, [word = Word<kPattern>(group)](uint8_t *to, int32_t bytes) {
        for (int32_t at = 0; at < bytes - kPattern; at += kPattern)
            word.Store(to + at);
        word.Store(to + bytes - kPattern);
    });
}

// As memset does for bytes: a string store need not read the cache lines that it overwrites.
void StorePairs(uint8_t *to, const uint8_t *pattern, size_t bytes) {
#if defined(__x86_64__)
    uint32_t pairs;
    memcpy(&pairs, pattern, sizeof pairs);
    memcpy(to + bytes - 4, pattern, 4);
    size_t count = bytes / 4;
    asm volatile("rep stosl" : "+D"(to), "+c"(count) : "a"(pairs) : "memory");
#else
    for (size_t at = 0; at + kPattern <= bytes; at += kPattern)
        memcpy(to + at, pattern, kPattern);
    memcpy(to + bytes - kPattern, pattern, kPattern);
#endif
}

void StoreLong(uint8_t *base, const Group &group) {
    ForEachRun(base, group, [&group](uint8_t *to, int32_t bytes) {
        if (group.pattern[0] == group.pattern[1])
            memset(to, group.pattern[0], size_t(bytes));
        else
            StorePairs(to, group.pattern, size_t(bytes));
    });
}

// ---- Recording ----

// From these lengths on memset, or the like for pairs, was the faster way.
constexpr int kLongLuma = 256;
constexpr int kLongChroma = 2048;

// One word, two that overlap, many with the last one overlapping, or a string store.
Store StoreFor(int bytes, int longFrom) {
    static const struct {
        int most;
        Store store;
    } kStores[] = {{1, StoreOnce<1>},   {2, StoreOnce<2>},    {3, StoreTwice<2>},
                   {4, StoreOnce<4>},   {7, StoreTwice<4>},   {8, StoreOnce<8>},
                   {15, StoreTwice<8>}, {32, StoreTwice<16>}, {64, StoreTwice<32>}};
    for (const auto &step : kStores)
        if (bytes <= step.most)
            return step.store;
    return bytes < longFrom ? StoreMany : StoreLong;
}

struct ColouredRun {
    Run run;
    uint8_t pair[2];
};

// Rows that follow each other without a gap are one run.
void AddRun(std::vector<ColouredRun> *runs, const ColouredRun &added) {
    if (!runs->empty()) {
        ColouredRun &last = runs->back();
        if (last.run.offset + last.run.bytes == added.run.offset &&
            memcmp(last.pair, added.pair, 2) == 0) {
            last.run.bytes += added.run.bytes;
            return;
        }
    }
    runs->push_back(added);
}

Group &GroupFor(Groups *groups, Store store, const uint8_t pair[2]) {
    for (Group &group : *groups)
        if (group.store == store && memcmp(group.pattern, pair, 2) == 0)
            return group;
    Group group = {store, {}, {}};
    for (int i = 0; i < kPattern; ++i)
        group.pattern[i] = pair[i % 2];
    groups->push_back(group);
    return groups->back();
}

// sample: bytes of one, 1 in luma and 2 in chroma.
std::vector<ColouredRun> ReadRuns(const uint8_t *plane, const Frame &frame, int rows, int sample,
                                  ptrdiff_t origin, uint8_t paper) {
    std::vector<ColouredRun> runs;
    for (int row = 0; row < rows; ++row) {
        const uint8_t *line = plane + row * frame.stride;
        for (int x = 0; x < frame.width;) {
            const int first = x;
            do
                x += sample;
            while (x < frame.width && memcmp(line + x, line + first, size_t(sample)) == 0);
            const uint8_t pair[2] = {line[first], line[first + sample - 1]};
            if (pair[0] != paper || pair[1] != paper)
                AddRun(&runs, {{int32_t(row * frame.stride + first - origin), x - first, 1, 0},
                               {pair[0], pair[1]}});
        }
    }
    return runs;
}

// How many runs from first on are equally long and equally far apart.
size_t SeriesLength(const std::vector<Run> &runs, size_t first) {
    size_t next = first + 1;
    while (next < runs.size() && runs[next].bytes == runs[first].bytes &&
           runs[next].offset - runs[next - 1].offset == runs[first + 1].offset - runs[first].offset)
        ++next;
    return next - first;
}

// Series, such as the rows of a rectangle or the pixels of a diagonal, are stored without a look at
// the list in between.
std::vector<Run> JoinSeries(const std::vector<Run> &runs) {
    constexpr size_t kWorthwhile = 3;
    std::vector<Run> joined;
    for (size_t i = 0; i < runs.size();) {
        const size_t length = SeriesLength(runs, i);
        Run run = runs[i];
        if (length >= kWorthwhile) {
            run.count = int32_t(length);
            run.pitch = runs[i + 1].offset - run.offset;
        }
        joined.push_back(run);
        i += size_t(run.count);
    }
    return joined;
}

// Column by column where that makes far fewer series: the two sides of a frame.
std::vector<Run> ArrangeRuns(const std::vector<Run> &runs, int32_t stride) {
    std::vector<Run> columns = runs;
    const int32_t bias = 1024 * stride; // runs may lie above and left of the place
    std::stable_sort(columns.begin(), columns.end(), [=](const Run &a, const Run &b) {
        return (a.offset + bias) % stride < (b.offset + bias) % stride;
    });
    const std::vector<Run> byRow = JoinSeries(runs);
    const std::vector<Run> byColumn = JoinSeries(columns);
    return 2 * byColumn.size() < byRow.size() ? byColumn : byRow;
}

Groups MakeGroups(const std::vector<ColouredRun> &runs, ptrdiff_t stride, int longFrom) {
    Groups groups;
    for (const ColouredRun &run : runs)
        GroupFor(&groups, StoreFor(run.run.bytes, longFrom), run.pair).runs.push_back(run.run);
    for (Group &group : groups)
        group.runs = ArrangeRuns(group.runs, int32_t(stride));
    return groups;
}

struct Recording {
    Groups luma;
    Groups chroma;
};

Recording Record(const Job &job, const Frame &frame) {
    FrameMemory canvas(frame.width, frame.height, frame.chroma ? Layout::NV12 : Layout::Y8);
    memset(canvas.frame.luma, kPaper.y, size_t(frame.stride * frame.height));
    if (frame.chroma)
        memset(canvas.frame.chroma, kPaper.u, size_t(frame.stride * frame.height / 2));
    // At other places dashes begin elsewhere in their period: no more is different.
    const Point place = job.width == frame.width ? Point{0, 0} : Point{32, 32};
    MakeLibrary(job, canvas.frame)({place});

    Recording recording;
    recording.luma = MakeGroups(ReadRuns(canvas.frame.luma, frame, frame.height, 1,
                                         place.y * frame.stride + place.x, kPaper.y),
                                frame.stride, kLongLuma);
    if (frame.chroma)
        recording.chroma = MakeGroups(ReadRuns(canvas.frame.chroma, frame, frame.height / 2, 2,
                                               place.y / 2 * frame.stride + place.x, kPaper.u),
                                      frame.stride, kLongChroma);
    return recording;
}

// ---- Painting ----

Painter Replay(const Frame &frame, const Recording &recording) {
    return AtEveryPlace([frame, recording](int x, int y) {
        for (const Group &group : recording.luma)
            group.store(frame.luma + y * frame.stride + x, group);
        for (const Group &group : recording.chroma)
            group.store(frame.chroma + y / 2 * frame.stride + x, group);
    });
}

void CopyBlock(uint8_t *to, const uint8_t *from, ptrdiff_t stride, int width, int height) {
    if (width == stride)
        memcpy(to, from, size_t(stride * height));
    else
        for (int row = 0; row < height; ++row)
            memcpy(to + row * stride, from + row * stride, size_t(width));
}

Painter CopyBlocks(const Frame &frame, const Frame &source, int width, int height) {
    return AtEveryPlace([=](int x, int y) {
        CopyBlock(frame.luma + y * frame.stride + x, source.luma, frame.stride, width, height);
        if (frame.chroma)
            CopyBlock(frame.chroma + y / 2 * frame.stride + x, source.chroma, frame.stride, width,
                      height / 2);
    });
}

} // namespace

Painter MakeFloor(const Job &job, const Frame &frame) {
    switch (job.shape) {
    case Shape::HalfBitmap: // depends on what it is drawn over
    case Shape::Measuring:  // stores nothing
    case Shape::ColdFont:
        return {};
    case Shape::Blit:
        return CopyBlocks(frame, BlitSource(frame), job.width, job.height);
    case Shape::Overlay:
        return MakeOverlay(frame, MakeFloor, MakeFloor);
    default:
        return Replay(frame, Record(job, frame));
    }
}

} // namespace bench
