// SPDX-License-Identifier: MIT
// The loops over bits of bitmaps that AVX2 and AVX-512 share.
#pragma once

#include "kernels/kernels.h"

namespace orn {
namespace kernels {
namespace bmi2 {

void PlanBits(BitPlan *plan, const BitScaling &scaling);
void ExpandBits(uint32_t *to, int32_t pitch, const uint32_t *const *rows, int32_t rowCount,
                const BitPlan &plan);

} // namespace bmi2
} // namespace kernels
} // namespace orn
