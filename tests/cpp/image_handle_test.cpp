#include <gtest/gtest.h>

#include <utility>

#include "fbcompose/fbcompose.hpp"

namespace {

using fbcompose::image;

TEST(ImageHandle, CopiesShareAndEveryHandleReleasesOnce) {
    image a = image::create(4, 3);
    ASSERT_TRUE(a);
    EXPECT_EQ(a->ref, 1);
    {
        image b = a;
        EXPECT_EQ(b.get(), a.get());
        EXPECT_EQ(a->ref, 2);
        image c;
        c = b;
        EXPECT_EQ(a->ref, 3);
    }
    EXPECT_EQ(a->ref, 1);
    image moved = std::move(a);
    EXPECT_FALSE(a);
    EXPECT_EQ(moved->ref, 1);
}

TEST(ImageHandle, AdoptTakesTheReferenceAndShareAddsOne) {
    xc_image *raw = xc_image_create(2, 2);
    {
        image shared = image::share(raw);
        EXPECT_EQ(raw->ref, 2);
    }
    EXPECT_EQ(raw->ref, 1);
    image owner = image::adopt(raw);
    EXPECT_EQ(raw->ref, 1);
    xc_image *back = owner.release();
    EXPECT_FALSE(owner);
    EXPECT_EQ(back->ref, 1);
    xc_image_unref(back);
}

TEST(ImageHandle, RowsAreSpansOverThePixels) {
    image canvas = image::create(5, 2);
    ASSERT_TRUE(canvas);
    auto row = canvas.row(1);
    EXPECT_EQ(row.size(), 5u);
    EXPECT_EQ(reinterpret_cast<uint8_t *>(row.data()), canvas->data + canvas->rowstride);
    row[4] = 0xFF123456u;
    EXPECT_EQ(static_cast<uint32_t *>(xc_image_pointer(canvas.get(), 4, 1))[0], 0xFF123456u);

    image narrow = image::adopt(xc_image_new_from_data(6, 2, nullptr, 16, 0, 0));
    EXPECT_EQ(narrow.row16(1).size(), 6u);
    EXPECT_EQ(reinterpret_cast<uint8_t *>(narrow.row16(1).data()), narrow->data + 12);
    const xg_area area = canvas.area();
    EXPECT_EQ(area.x2, 5);
    EXPECT_EQ(area.y2, 2);
}

TEST(ImageHandle, CreateGivesAnEmptyHandleWithoutPixels) {
    image huge = image::create(0x40000000, 4);
    EXPECT_FALSE(huge);
}

}  // namespace
