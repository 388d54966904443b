#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "fbcompose/draw.h"

namespace {

using Rects = std::vector<std::tuple<int, int, int, int>>;

// Reads the bands as a caller must (freeing items and list), then checks
// that reading left the grid clean.
Rects take_rects(xc_dm *dm) {
    Rects out;
    xg_list *list = xc_dm_get_rects(dm);
    for (xg_list_item *item = list ? list->first : nullptr; item; item = item->next) {
        const auto &r = *static_cast<xg_rect *>(item->data);
        out.emplace_back(r.x, r.y, r.w, r.h);
    }
    xg_list_free_with_data(list);
    EXPECT_EQ(xc_dm_get_rects(dm), nullptr) << "reading must leave the grid clean";
    return out;
}

TEST(DamageAddArea, CountsTheBlockAfterClippingEachTimeAndReportsItUnclipped) {
    const struct {
        xg_rect rect;
        int32_t tiles;
        Rects bands;
    } cases[] = {
        {{-10, -10, 20, 20}, 1, {{0, 0, 16, 16}}},
        {{0, 0, 16, 16}, 1, {{0, 0, 16, 16}}},
        {{0, 0, 17, 1}, 2, {{0, 0, 32, 16}}},
        {{15, 15, 2, 2}, 4, {{0, 0, 32, 32}}},
        // The 100 x 50 screen rounds up to 7 x 4 tiles; edge bands reach past it.
        {{0, 0, 1000, 1000}, 28, {{0, 0, 112, 64}}},
        {{90, 40, 100, 100}, 4, {{80, 32, 32, 32}}},
        {{99, 49, 1, 1}, 1, {{96, 48, 16, 16}}},
        // Past each edge, empty, and beyond the largest coordinate.
        {{100, 0, 5, 5}, 0, {}},
        {{0, 50, 5, 5}, 0, {}},
        {{-5, 0, 5, 5}, 0, {}},
        {{3, 3, 0, 5}, 0, {}},
        {{3, 3, 5, 0}, 0, {}},
        {{INT32_MAX - 1, 0, 100, 5}, 0, {}},
    };
    for (const auto &c : cases) {
        xc_dm *dm = xc_dm_new(100, 50);
        EXPECT_EQ(xc_dm_add_area(dm, &c.rect), c.tiles) << c.rect.x << "," << c.rect.y;
        EXPECT_EQ(xc_dm_add_area(dm, &c.rect), c.tiles) << "marked again";
        EXPECT_EQ(take_rects(dm), c.bands) << c.rect.x << "," << c.rect.y;
        xc_dm_add_area(dm, &c.rect);
        xc_dm_reset(dm);
        EXPECT_EQ(xc_dm_get_rects(dm), nullptr) << "reset discards the damage";
        xc_dm_free(dm);
    }
}

TEST(DamageNew, AbsurdSizeGivesAnEmptyScreen) {
    // Too many tiles, or bands whose width would pass INT32_MAX.
    for (const auto &[w, h] : {std::pair{INT32_MAX, INT32_MAX}, {INT32_MAX - 14, 16}}) {
        testing::internal::CaptureStderr();
        xc_dm *dm = xc_dm_new(w, h);
        EXPECT_NE(testing::internal::GetCapturedStderr().find("xc_dm_new"), std::string::npos);
        const xg_rect r{0, 0, 100, 100};
        EXPECT_EQ(xc_dm_add_area(dm, &r), 0);
        xc_dm_reset(dm);
        EXPECT_EQ(xc_dm_get_rects(dm), nullptr);
        xc_dm_free(dm);
    }
}

// `grid` is rows of '#' (damaged) and '.' tiles separated by spaces, marked
// one tile at a time.
Rects bands_of(const std::string &grid) {
    const int pitch = static_cast<int>(std::min(grid.find(' '), grid.size())) + 1;
    const int size = static_cast<int>(grid.size());
    xc_dm *dm = xc_dm_new((pitch - 1) * 16, (size + 1) / pitch * 16);
    for (int i = 0; i < size; ++i) {
        const xg_rect tile{i % pitch * 16, i / pitch * 16, 16, 16};
        if (grid[static_cast<size_t>(i)] == '#') xc_dm_add_area(dm, &tile);
    }
    Rects out = take_rects(dm);
    xc_dm_free(dm);
    return out;
}

TEST(DamageBands, HandDrawnGrids) {
    const struct {
        const char *grid;
        Rects bands;
    } cases[] = {
        {"....... ...#... .......", {{48, 16, 16, 16}}},
        {"####### #######", {{0, 0, 112, 32}}},
        // Asymmetric: the tile right of the run is not examined, one two past
        // it stops the band, and so does the tile left of the run.
        {"##.. ###.", {{0, 0, 32, 32}, {32, 16, 16, 16}}},
        {"##.. ####", {{0, 0, 32, 16}, {0, 16, 64, 16}}},
        {".##. ###.", {{16, 0, 32, 16}, {0, 16, 48, 16}}},
        {"### #.# ###", {{0, 0, 48, 16}, {0, 16, 16, 16}, {32, 16, 16, 16}, {0, 32, 48, 16}}},
        {"#..# #..#", {{0, 0, 16, 32}, {48, 0, 16, 32}}},
        {"..## ..##", {{32, 0, 32, 32}}},
        {"## .. ##", {{0, 0, 32, 16}, {0, 32, 32, 16}}},
        {"#.. .#. ..#", {{0, 0, 16, 16}, {16, 16, 16, 16}, {32, 32, 16, 16}}},
    };
    for (const auto &c : cases) EXPECT_EQ(bands_of(c.grid), c.bands) << c.grid;
}

}  // namespace
