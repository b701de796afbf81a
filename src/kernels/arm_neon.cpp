// SPDX-License-Identifier: MIT
// The innermost loops for NEON, which every 64-bit ARM processor has: as the plain ones, but that
// two rows of bytes are averaged by one instruction.
#include "kernels/kernels.h"

#if defined(__aarch64__) && defined(__GNUC__)
#include <arm_neon.h>

using namespace orn;

namespace orn {
namespace kernels {
namespace neon {
ORN_KERNEL_LOOPS()
}
} // namespace kernels
} // namespace orn

namespace {

#define ORN_SET static inline
using Block = uint8x16_t;
using Wide = Block;

// Counted, not timed: jobs "bitmap" and "bitmap-200-half" of bench/instructions.arm.txt.
constexpr bool kSingleRowsApart = true;
constexpr ptrdiff_t kBlockBytes = sizeof(Block);
constexpr ptrdiff_t kWideBytes = sizeof(Wide);

ORN_SET Block FirstBlock(Wide wide) {
    return wide;
}

ORN_SET uint64_t FirstBytes(Wide wide) {
    return vgetq_lane_u64(vreinterpretq_u64_u8(wide), 0);
}

ORN_SET Block Average(Block a, Block b) {
    return vhaddq_u8(a, b);
}

} // namespace

#include "kernels/mask_runs.h"

// ---- Rows and spans ----

void kernels::neon::FillRows(uint8_t *first, ptrdiff_t stride, int64_t rows, ptrdiff_t bytes,
                             Pattern pattern) {
    plain::FillRows(first, stride, rows, bytes, pattern);
}

void kernels::neon::PaintSpans(const Plane &plane, const OrnMinRenderScanline *spans, int32_t count,
                               Pattern pattern) {
    plain::PaintSpans(plane, spans, count, pattern);
}

// ---- Masks ----

void kernels::neon::PaintMask(const Plane &plane, const Mask &mask, const Ink &ink) {
    PaintMaskRuns(plane, mask, ink);
}

int32_t kernels::neon::PrepareNarrowMask(uint32_t *words, int32_t rows) {
    return plain::PrepareNarrowMask(words, rows);
}

void kernels::neon::PaintNarrowMask(uint8_t *first, ptrdiff_t stride, const uint32_t *words,
                                    int32_t rows, uint32_t columns, Pattern pattern) {
    plain::PaintNarrowMask(first, stride, words, rows, columns, pattern);
}

// ---- Bits of bitmaps ----

void kernels::neon::PlanBits(BitPlan *plan, const BitScaling &scaling) {
    plain::PlanBits(plan, scaling);
}

void kernels::neon::ExpandBits(uint32_t *to, int32_t pitch, const uint32_t *const *rows,
                               int32_t rowCount, const BitPlan &plan) {
    plain::ExpandBits(to, pitch, rows, rowCount, plan);
}

#endif
