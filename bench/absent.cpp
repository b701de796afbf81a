// SPDX-License-Identifier: MIT
// Stands in for the peers that were not found when the benchmark was built: they have no call for
// any job.
#include "jobs.h"

namespace bench {

#ifndef ORN_BENCH_OPENCV
Painter MakeOpenCv(const Job &, const Frame &) {
    return {};
}
Painter MakeOpenCvBgr(const Job &, const Frame &) {
    return {};
}
#endif

#ifndef ORN_BENCH_CAIRO
Painter MakeCairo(const Job &, const Frame &) {
    return {};
}
#endif

#ifndef ORN_BENCH_PIXMAN
Painter MakePixman(const Job &, const Frame &) {
    return {};
}
#endif

#ifndef ORN_BENCH_LIBYUV
Painter MakeLibyuv(const Job &, const Frame &) {
    return {};
}
#endif

} // namespace bench
