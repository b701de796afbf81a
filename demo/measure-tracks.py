#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Measure where the people walk in a clip from one fixed camera.

Usage: measure-tracks.py CLIP > vtest-tracks.csv
Needs: OpenCV and NumPy (Debian: python3-opencv). CLIP is vtest.avi of Debian's opencv-doc.

How it works, over the whole clip at once (nothing is live, so every step may look ahead):
1. Background: the median of frames spread over the clip; what differs from it is a figure.
2. Lone people: blobs that stand upright. They show how tall a person is at each place of the
   picture (perspective), and what the mean silhouette looks like.
3. Groups and torn blobs: that silhouette, scaled to the place, is laid where it explains most of
   what is left of the blob, again and again, until nothing more is explained well. Places where
   someone is expected are favoured, so that people stay apart while they pass each other.
4. Links: boxes are joined frame to frame by overlap with the expected box and by colour; then
   pieces of tracks are joined over gaps, where one person was hidden by another or by the post.
5. Smoothing, dropping of short and motionless tracks and of slipped ends, key frames.
"""
import sys
import cv2
import numpy as np

KEY = 5                # frames between key frames; at 10 frames/s people bend their way slower than that
DIFFERS = 28           # grey levels; below it camera noise and soft shadows come through
POST = ((421, 95, 442, 392), (411, 200, 448, 246))  # lamp post and its sign hide people: no evidence there
FAR, CARS = 88, (640, 106)  # feet above the line, or above the cars' line right of 640: too small, too much glitter
TW, TH = 32, 64        # size at which silhouettes are averaged
HOLD, BRIDGE = 8, 30   # frames a track is held without a box, and may be joined over afterwards
SHORTEST = 10          # frames; a shorter track is rather noise than a person


def read(path):
    clip, frames = cv2.VideoCapture(path), []
    while True:
        ok, frame = clip.read()
        if not ok:
            return frames
        frames.append(frame)


def figure_masks(frames):
    back = np.median(np.array(frames[::10]), axis=0).astype(np.uint8)
    for frame in frames:
        mask = (cv2.absdiff(frame, back).max(axis=2) > DIFFERS).astype(np.uint8)
        # The barrier tape swings in the wind: it is thin, so a tall opening takes it away.
        mask = cv2.morphologyEx(mask, cv2.MORPH_OPEN, np.ones((7, 1), np.uint8))
        yield cv2.morphologyEx(mask, cv2.MORPH_CLOSE, np.ones((5, 3), np.uint8))


def blobs(mask):
    _, labels, stats, _ = cv2.connectedComponentsWithStats(mask)
    return labels, [(i, x, y, x + w, y + h, a) for i, (x, y, w, h, a) in enumerate(stats) if i and a > 60]


def terms(x, y):
    """What the height of a person is a sum of; not a plain slope, since the lawns are not level."""
    x, y = np.asarray(x) / 768, np.asarray(y) / 576
    return np.stack([np.ones_like(x), x, y, x * y, y * y], axis=-1)


def near(x, y):
    """Whether feet at this place are near enough to the camera to be measured."""
    return y > np.where(x > CARS[0], CARS[1], FAR)


def learn(masks):
    """Fit height by place of the feet, and the mean silhouette, to blobs that look like one person."""
    seen, H, W = [], *masks[0].shape
    for n in range(0, len(masks), 2):
        for _, l, t, r, b, area in blobs(masks[n])[1]:
            if l > 2 and r < W - 2 and b < H - 2 and near(r, b) and 0.2 < (r - l) / (b - t) < 0.5 \
                    and b - t > 30 and area > 0.4 * (r - l) * (b - t):
                seen.append((n, l, t, r, b))
    s = np.array(seen)
    A, h = terms((s[:, 1] + s[:, 3]) / 2, s[:, 4]), (s[:, 4] - s[:, 2]).astype(float)
    good = np.ones(len(s), bool)
    for _ in range(8):  # pairs and halves of people lie far from the fit: leave them out and fit anew
        fit = np.linalg.lstsq(A[good], h[good], rcond=None)[0]
        good = abs(A @ fit / h - 1) < 0.15
    mean = np.mean([cv2.resize(masks[n][t:b, l:r].astype(np.float32), (TW, TH), interpolation=cv2.INTER_AREA)
                    for n, l, t, r, b in s[good]], axis=0)
    wide = np.median((s[good, 3] - s[good, 1]) / h[good])
    return fit, mean, wide


def people(mask, guesses, fit, mean, wide):
    """The boxes of one frame, as (left, top, right, bottom, sure)."""
    H, W = mask.shape
    tall = lambda x, y: np.maximum(terms(x, y) @ fit, 25)
    labels, found = blobs(mask)
    value = np.where(mask > 0, 1.0, -1.3).astype(np.float32)
    boxes, rest = [], []
    for i, l, t, r, b, area in found:
        h = tall((l + r) / 2, b)
        edge = l < 2 or r > W - 3 or b > H - 3
        # A stride spreads the legs, never the trunk: a wide upper half is a second person.
        trunk = np.count_nonzero((labels[t:(t + b) // 2, l:r] == i).mean(axis=0) > 0.25)
        if near(r, b) and 0.18 * h < r - l < 0.62 * h and trunk < 0.34 * h \
                and (0.85 * h < b - t < 1.2 * h or edge and 0.45 * h < b - t < 1.1 * h):
            boxes.append((l, t, r, b, 1.0))
            value[labels == i] = 0
        elif area > 0.08 * h * h * wide:
            rest.append((l, t, r, b))
    for l, t, r, b in POST:
        value[t:b, l:r] = np.where(mask[t:b, l:r] > 0, value[t:b, l:r], 0)
    for l, t, r, b in rest:
        while True:  # the best place first; what it explains counts no more for the next one
            best = (0.32,)
            h0, h1 = tall((l + r) / 2, t + 30), tall((l + r) / 2, min(b + 30, H + 40))
            for h in np.geomspace(h0, max(h1, h0 + 1), 1 + int(np.log(max(h1 / h0, 1)) / 0.06)):
                h, w = int(h), int(h * wide) | 1
                shape = cv2.resize(mean, (w, h))
                shape /= shape.sum()
                x0, y0, x1, y1 = max(l - w, 0), max(t - h // 2, 0), min(r + w, W), min(b + h // 2, H)
                gain = cv2.filter2D(value[y0:y1, x0:x1], -1, shape, anchor=(w // 2, h - 1), borderType=cv2.BORDER_CONSTANT)
                ys, xs = np.mgrid[y0:y1, x0:x1]
                # Figure just above the head or below the feet says that the box slid along a taller one.
                p = h // 12 + 1
                bands = np.zeros((h + 2 * p, w), np.float32)
                bands[:p, w // 4:-w // 4] = bands[-p:, w // 4:-w // 4] = 1 / (p * (w // 2))
                gain -= 0.3 * cv2.filter2D(np.maximum(value[y0:y1, x0:x1], 0), -1, bands, anchor=(w // 2, p + h - 1),
                                           borderType=cv2.BORDER_CONSTANT)
                for a, _, c, d in guesses:  # a group is the sum of those who went into it
                    away = (xs - (a + c) / 2) ** 2 + (ys - d) ** 2
                    gain += 0.15 * np.exp(-away / (2 * (0.06 * h) ** 2))
                gain[(abs(tall(xs, ys) / h - 1) > 0.06) | ~near(xs, ys)] = -9
                k = int(gain.argmax())
                if gain.flat[k] > best[0]:
                    best = (float(gain.flat[k]), int(xs.flat[k]), int(ys.flat[k]), w, h)
            if len(best) == 1:
                break
            g, x, y, w, h = best
            boxes.append((x - w // 2, y - h + 1, x + w // 2 + 1, y + 1, g))
            part = value[max(y - h + 1, 0):y + 1, max(x - w // 2, 0):x + w // 2 + 1]
            part[part > 0] = 0
    return boxes


def colours(frame, mask, box):
    """Colour histograms of the upper and the lower half, so that a dot product compares two people."""
    l, t, r, b = (max(int(v), 0) for v in box[:4])
    halves = [cv2.calcHist([frame[y0:y1, l:r]], [0, 1, 2], mask[y0:y1, l:r], [8] * 3, [0, 256] * 3).ravel()
              for y0, y1 in ((t, (t + b) // 2), ((t + b) // 2, b))]
    return np.concatenate([np.sqrt(h / max(h.sum(), 1) / 2) for h in halves])


def overlap(a, b):
    w, h = min(a[2], b[2]) - max(a[0], b[0]), min(a[3], b[3]) - max(a[1], b[1])
    if w <= 0 or h <= 0:
        return 0.0
    return w * h / ((a[2] - a[0]) * (a[3] - a[1]) + (b[2] - b[0]) * (b[3] - b[1]) - w * h)


class Track:
    def __init__(self, n, box, look):
        self.at, self.look = {n: np.array(box, float)}, look

    def ends(self):
        return min(self.at), max(self.at)

    def guess(self, n):
        """The box at frame n, carried on from the nearer end at the speed of the foot there."""
        first, last = self.ends()
        span = sorted(self.at)[:9] if n < first else sorted(self.at)[-9:]
        box, speed = self.at[first if n < first else last][:4], np.zeros(2)
        if len(span) > 3:
            foot = [((self.at[k][0] + self.at[k][2]) / 2, self.at[k][3]) for k in span]
            speed = np.polyfit(span, foot, 1)[0]
        return box + np.tile(speed * (n - (first if n < first else last)), 2)


def best_pairs(scored):
    """Greedy one-to-one choice from (score, a, b), the best first."""
    used_a, used_b = set(), set()
    for _, a, b in sorted((s for s in scored if s[0] > 0), reverse=True):
        if a not in used_a and b not in used_b:
            used_a.add(a), used_b.add(b)
            yield a, b


def link(frames, masks, model):
    tracks = []
    for n, (frame, mask) in enumerate(zip(frames, masks)):
        live = [t for t in tracks if n - t.ends()[1] <= HOLD]
        guesses = [t.guess(n) for t in live]
        boxes = people(mask, [g for g, t in zip(guesses, live) if len(t.at) > 4], *model)
        looks = [colours(frame, mask, b) for b in boxes]
        pairs = list(best_pairs((min(o - 0.2, 1) + live[i].look @ looks[j] - 0.6, i, j)
                                for i in range(len(live)) for j in range(len(boxes))
                                for o in [overlap(guesses[i], boxes[j])] if o > 0.2 and live[i].look @ looks[j] > 0.66
                                # Heads do not leap: up or down that fast, it is the box of someone else.
                                and abs(guesses[i] - boxes[j][:4])[1::2].mean() < 0.2 * (n - live[i].ends()[1])
                                * (boxes[j][3] - boxes[j][1])))
        for i, j in pairs:
            live[i].at[n] = np.array(boxes[j], float)
            if boxes[j][4] == 1:  # only a lone person's colours are surely that person's
                live[i].look = 0.9 * live[i].look + 0.1 * looks[j]
        taken = {j for _, j in pairs}
        tracks += [Track(n, b, looks[j]) for j, b in enumerate(boxes) if j not in taken]
    for t in tracks:  # beside the post, an end is a guess at someone hidden, and spoils the joining
        for n in (*sorted(t.at), *sorted(t.at, reverse=True)):
            if n in t.ends() and 0 < n < len(frames) - 1 and len(t.at) > 1 and any(overlap(t.at[n], p) > 0 for p in POST):
                del t.at[n]
    tracks = [t for t in tracks if len(t.at) > 4]
    while True:  # joining changes what can be joined next
        scored = []
        for i, a in enumerate(tracks):
            for j, b in enumerate(tracks):
                gap = b.ends()[0] - a.ends()[1]
                start, end = b.at[b.ends()[0]], a.at[a.ends()[1]]
                # Who ends at a side of the picture has left it; the next one there is someone else.
                if 0 < gap <= BRIDGE and min(start[0], end[0]) > 3 and max(start[2], end[2]) < 765:
                    off = np.abs(a.guess(b.ends()[0]) - start[:4]) + np.abs(b.guess(a.ends()[1]) - end[:4])
                    off = off.mean() / (start[3] - start[1])
                    scored.append((min(0.5 - off, a.look @ b.look - 0.65), i, j))
        pairs = list(best_pairs(scored))[:1]
        if not pairs:
            return tracks
        (i, j), = pairs
        tracks[i].at.update(tracks[j].at)
        del tracks[j]


def smooth(track):
    """Boxes of every frame from the first to the last, by a line fitted around each frame."""
    first, last = track.ends()
    n = np.arange(first, last + 1)
    known = sorted(track.at)
    raw = np.array([track.at[k] for k in known])
    l, t, r, b, sure = (np.interp(n, known, raw[:, c]) for c in range(5))
    # A lone person's blob is trusted over a fitted silhouette, and both far over a filled gap.
    weight = np.where(np.isin(n, known), np.where(sure == 1, 1, 0.3), 0.02)
    # The stride makes the width swing faster than key frames can follow: a wide one holds the feet.
    wide = np.array([np.percentile((r - l)[max(i - 4, 0):i + 5], 70) for i in range(len(n))])
    out = []
    for k in n:
        w = np.sqrt(weight * np.exp(-0.5 * ((n - k) / 2.5) ** 2))[:, None]
        A = np.stack([np.ones(len(n)), n - k], axis=1)
        x, y0, y1, d = np.linalg.lstsq(A * w, np.stack([(l + r) / 2, t, b, wide], axis=1) * w, rcond=None)[0][0]
        out.append((x - d / 2, y0, x + d / 2, y1))
    return np.clip(np.array(out), 0, (768, 576) * 2)


def main():
    frames = read(sys.argv[1])
    masks = list(figure_masks(frames))
    kept = []
    for track in link(frames, masks, learn(masks)):
        first, last = track.ends()
        boxes = smooth(track)
        went = np.ptp((boxes[:, 0] + boxes[:, 2]) / 2) + np.ptp(boxes[:, 3])
        if len(track.at) >= SHORTEST and len(track.at) > 0.5 * (last - first) and went > (boxes[0, 3] - boxes[0, 1]) / 2:
            kept.append([first, last, boxes])
    for me in kept:  # whose end lies over someone else has slipped onto that person
        for k, step in ((0, 1), (-1, -1)):
            while len(me[2]) > 1 and any(overlap(me[2][k], o[2][me[k and 1] - o[0]]) > 0.4 for o in kept
                                         if o is not me and o[0] <= me[k and 1] <= o[1]):
                me[2] = np.delete(me[2], k, axis=0)
                me[k and 1] += step
    kept.sort(key=lambda k: (k[0], k[2][0][0]))
    rows = sorted((n, i, *np.rint(boxes[n - first]).astype(int)) for i, (first, last, boxes) in enumerate(kept, 1)
                  for n in range(first, last + 1) if n % KEY == 0 or n in (first, last))
    print("""\
# Where people walk in vtest.avi (768x576 pixels, 795 frames, 10 frames/s), the clip of a street
# that comes with Debian's package opencv-doc.
# Measured by measure-tracks.py, in this folder, with OpenCV %s: figures are what differs from the
# median of the clip; groups are taken apart with the mean silhouette of lone people, at the height
# fitted for each place; boxes are linked by overlap and colour, joined over gaps, and smoothed.
# One line is one key frame of one track: every %dth frame, and the first and last of the track.
# Between key frames each edge moves evenly; before the first and after the last there is no box.
# People cut off by the picture's border have boxes that end there. Ids count from 1 in order of
# appearance; who was long out of sight comes back under a new one.
# Rows are as in MOTChallenge: frames count from 1, edges are in pixels from the picture's top left
# corner, and the confidence says nothing.
frame,id,left,top,width,height,confidence""" % (cv2.__version__, KEY))
    for n, i, left, top, right, bottom in rows:
        print(n + 1, i, left, top, right - left, bottom - top, 1, sep=",")


if __name__ == "__main__":
    main()
