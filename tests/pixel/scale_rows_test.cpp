// Every variant of the scalers' row passes this CPU can run (also ones it
// would not pick) against the reference: rows of 0 to 70 words at weights
// on both sides of half and at the ends, taps anywhere in the row with the
// next word or the same one; box rows of 1 to 9 rows at counts that fill
// 16-bit totals to the brim and one past, over full and random words. The
// reference itself is pinned by the seeded
// scaled-output hashes, which the scalar build checks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "pixel/scale_rows.hpp"
#include "seeded.hpp"

namespace {

using fbc::px::BoxTap;
using fbc::px::Kernel;
using fbc::px::WordTap;
using Words = std::vector<uint32_t>;

constexpr uint32_t kWeights[] = {0, 1, 255, 256, 32767, 32768, 32769, 65280, 65535};

template <class Fn, class Run>
void each_variant(const Kernel<Fn> &kernel, Run run) {
    for (const auto &v : kernel.variants) {
        if (!v.run) continue;
        if (fbc::px::cpu_has(v.isa)) run(v.name, v.run);
        else std::printf("not run here: %s\n", v.name);
    }
}

TEST(ScaleRows, EveryVariantEqualsTheReference) {
    test::Rng rng(11);
    for (int32_t n = 0; n <= 70; ++n)
        for (int trial = 0; trial < 4; ++trial) {
            Words top(size_t(n) + 1), bottom(top.size()), row(size_t(n) + 2);
            for (auto *words : {&top, &bottom, &row})
                for (uint32_t &v : *words) v = rng.word();
            const uint32_t f = trial < 3 ? kWeights[rng.below(9)] : uint32_t(rng.below(65536));
            std::vector<WordTap> taps;
            for (int32_t i = 0; i < n; ++i) {
                const int32_t at = rng.below(int32_t(row.size()) - 1);
                taps.push_back(
                    {at, at + rng.below(2), uint32_t(rng.below(2) ? rng.below(65536) : f)});
            }
            Words want(size_t(n) + 1, 7), got;
            fbc::px::kLerpRows.reference(top.data(), bottom.data(), want.data(), n, f);
            each_variant(fbc::px::kLerpRows, [&](const char *name, auto run) {
                got.assign(want.size(), 7);
                run(top.data(), bottom.data(), got.data(), n, f);
                EXPECT_EQ(got, want) << name << " n " << n << " f " << f;
            });
            fbc::px::kLerpWords.reference(row.data(), taps.data(), want.data(), n);
            each_variant(fbc::px::kLerpWords, [&](const char *name, auto run) {
                got.assign(want.size(), 7);
                run(row.data(), taps.data(), got.data(), n);
                EXPECT_EQ(got, want) << name << " n " << n;
            });
        }
}

TEST(ScaleRows, EveryBoxVariantEqualsTheReference) {
    test::Rng rng(12);
    for (int trial = 0; trial < 300; ++trial) {
        const int32_t rows = rng.between(1, 9), n = rng.between(0, 9), width = 320;
        const int32_t brim = 257 / rows;  // count x rows at most 257: the widest 16-bit totals
        const int32_t counts[] = {1, 2, 3, 4, 5, brim, brim + 1, rng.between(1, 300)};
        std::vector<BoxTap> taps;
        for (int32_t i = 0; i < n; ++i) {
            const int32_t count = std::min(counts[rng.below(8)], width);
            const int32_t first = rng.below(width - count + 1);
            taps.push_back({first, count, fbc::px::Divider(uint32_t(count * rows))});
        }
        const intptr_t stride = 4 * (width + rng.below(3));
        Words source(size_t(stride / 4 * rows));
        const bool full = trial % 3 == 0;
        for (uint32_t &v : source) v = full ? 0xFFFFFFFFu : rng.word();
        Words want(size_t(n) + 1, 7), got;
        fbc::px::kBoxRow.reference(source.data(), stride, rows, taps.data(), want.data(), n);
        each_variant(fbc::px::kBoxRow, [&](const char *name, auto run) {
            got.assign(want.size(), 7);
            run(source.data(), stride, rows, taps.data(), got.data(), n);
            EXPECT_EQ(got, want) << name << " rows " << rows << " trial " << trial;
        });
    }
}

}  // namespace
