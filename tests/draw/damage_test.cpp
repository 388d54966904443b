#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <tuple>
#include <vector>

#include "fbcompose/draw.h"

namespace {

using Rects = std::vector<std::tuple<int, int, int, int>>;

// Takes the result list apart, freeing items and list as a caller must.
Rects collect(xg_list *list) {
    Rects out;
    if (!list) return out;
    for (xg_list_item *item = list->first; item; item = item->next) {
        auto *r = static_cast<xg_rect *>(item->data);
        out.emplace_back(r->x, r->y, r->w, r->h);
    }
    xg_list_free_with_data(list);
    return out;
}

// A grid drawn with '#' for damaged tiles, one string per tile row, marked
// through xc_dm_add_area one tile at a time.
Rects bands_of(const std::vector<std::string> &grid) {
    const int cols = static_cast<int>(grid[0].size());
    const int rows = static_cast<int>(grid.size());
    xc_dm *dm = xc_dm_new(cols * 16, rows * 16);
    for (int r = 0; r < rows; ++r)
        for (int c = 0; c < cols; ++c)
            if (grid[static_cast<size_t>(r)][static_cast<size_t>(c)] == '#') {
                const xg_rect tile{c * 16, r * 16, 16, 16};
                EXPECT_EQ(xc_dm_add_area(dm, &tile), 1);
            }
    Rects out = collect(xc_dm_get_rects(dm));
    EXPECT_EQ(xc_dm_get_rects(dm), nullptr) << "reading must leave the grid clean";
    xc_dm_free(dm);
    return out;
}

TEST(DamageNew, GridRoundsUpAndStartsClean) {
    xc_dm *dm = xc_dm_new(100, 50);
    EXPECT_EQ(dm->tile_w, 16);
    EXPECT_EQ(dm->tile_h, 16);
    EXPECT_EQ(dm->cols, 7);
    EXPECT_EQ(dm->rows, 4);
    for (int i = 0; i < 28; ++i) EXPECT_EQ(dm->tiles[i], 0);
    EXPECT_EQ(xc_dm_get_rects(dm), nullptr);
    xc_dm_free(dm);
}

TEST(DamageNew, AbsurdSizeGivesAnEmptyScreen) {
    testing::internal::CaptureStderr();
    xc_dm *dm = xc_dm_new(INT32_MAX, INT32_MAX);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("xc_dm_new"), std::string::npos);
    const xg_rect r{0, 0, 100, 100};
    EXPECT_EQ(xc_dm_add_area(dm, &r), 0);
    EXPECT_EQ(xc_dm_get_rects(dm), nullptr);
    xc_dm_reset(dm);
    xc_dm_free(dm);
}

TEST(DamageAddArea, CountsTheBlockOfTilesAfterClipping) {
    const struct {
        xg_rect rect;
        int32_t tiles;
    } cases[] = {
        {{-10, -10, 20, 20}, 1}, {{0, 0, 16, 16}, 1},    {{0, 0, 17, 1}, 2},
        {{15, 15, 2, 2}, 4},     {{0, 0, 1000, 1000}, 28}, {{90, 40, 100, 100}, 4},
        {{100, 0, 5, 5}, 0},     {{0, 50, 5, 5}, 0},     {{-5, 0, 5, 5}, 0},
        {{3, 3, 0, 5}, 0},       {{3, 3, 5, 0}, 0},      {{INT32_MAX - 1, 0, 100, 5}, 0},
    };
    for (const auto &c : cases) {
        xc_dm *dm = xc_dm_new(100, 50);
        EXPECT_EQ(xc_dm_add_area(dm, &c.rect), c.tiles)
            << c.rect.x << "," << c.rect.y << "," << c.rect.w << "," << c.rect.h;
        int set = 0;
        for (int i = 0; i < 28; ++i) set += dm->tiles[i];
        EXPECT_EQ(set, c.tiles);
        xc_dm_free(dm);
    }
}

TEST(DamageAddArea, RemarkingCountsTilesAgain) {
    xc_dm *dm = xc_dm_new(64, 64);
    const xg_rect r{0, 0, 32, 32};
    EXPECT_EQ(xc_dm_add_area(dm, &r), 4);
    EXPECT_EQ(xc_dm_add_area(dm, &r), 4);
    EXPECT_EQ(collect(xc_dm_get_rects(dm)), (Rects{{0, 0, 32, 32}}));
    xc_dm_free(dm);
}

TEST(DamageReset, DiscardsDamage) {
    xc_dm *dm = xc_dm_new(64, 64);
    const xg_rect r{0, 0, 64, 64};
    xc_dm_add_area(dm, &r);
    xc_dm_reset(dm);
    EXPECT_EQ(xc_dm_get_rects(dm), nullptr);
    xc_dm_free(dm);
}

TEST(DamageBands, HandDrawnGrids) {
    const struct {
        const char *name;
        std::vector<std::string> grid;
        Rects expected;
    } cases[] = {
        {"single tile", {".......", ".......", "...#...", "......."}, {{48, 32, 16, 16}}},
        {"two full rows", {"#######", "#######", "......."}, {{0, 0, 112, 32}}},
        {"right neighbour next to the run is not examined",
         {"##..", "###."},
         {{0, 0, 32, 32}, {32, 16, 16, 16}}},
        {"tile two past the run stops the band",
         {"##..", "####"},
         {{0, 0, 32, 16}, {0, 16, 64, 16}}},
        {"left neighbour stops the band", {".##.", "###."}, {{16, 0, 32, 16}, {0, 16, 48, 16}}},
        {"left neighbour of the hole row stops the band", {"###", "#.#", "###"},
         {{0, 0, 48, 16}, {0, 16, 16, 16}, {32, 16, 16, 16}, {0, 32, 48, 16}}},
        {"two runs in one row", {"#..#", "#..#"}, {{0, 0, 16, 32}, {48, 0, 16, 32}}},
        {"band ends at a clean row", {"##", "..", "##"}, {{0, 0, 32, 16}, {0, 32, 32, 16}}},
        {"run reaching the last column", {"..##", "..##"}, {{32, 0, 32, 32}}},
        {"diagonal", {"#..", ".#.", "..#"}, {{0, 0, 16, 16}, {16, 16, 16, 16}, {32, 32, 16, 16}}},
    };
    for (const auto &c : cases) EXPECT_EQ(bands_of(c.grid), c.expected) << c.name;
}

TEST(DamageBands, EdgeRectanglesAreNotClippedToTheScreen) {
    xc_dm *dm = xc_dm_new(100, 50);
    const xg_rect r{99, 49, 1, 1};
    EXPECT_EQ(xc_dm_add_area(dm, &r), 1);
    EXPECT_EQ(collect(xc_dm_get_rects(dm)), (Rects{{96, 48, 16, 16}}));
    xc_dm_free(dm);
}

}  // namespace
