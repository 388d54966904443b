#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "core/image_internal.hpp"
#include "fbcompose/image.h"

namespace {

// A decoded file image as the file front end leaves it: named, cacheable,
// entered in the active table. Its pixels cost side x side x 4 bytes, or
// nothing when they are the caller's.
xc_image *file_image(const std::string &name, int32_t side = 10, bool foreign = false) {
    static uint32_t caller_pixels[100 * 100];
    xc_image *image = foreign ? xc_image_new_from_data(side, side, caller_pixels, 32, 0, 1)
                              : xc_image_create(side, side);
    image->no_cache = 0;
    image->filename = strdup(name.c_str());
    fbc::xc_image_add_active(image);
    return image;
}

// Releases one file image per letter, in order.
void release(const std::string &names, int32_t side = 10, bool foreign = false) {
    for (char name : names) xc_image_unref(file_image({name}, side, foreign));
}

// The letters a lookup finds, all looked up before any is released again.
std::string cached(const std::string &names) {
    std::string found;
    std::vector<xc_image *> revived;
    for (char name : names) {
        revived.push_back(xc_image_lookup_in_cache(std::string{name}.c_str()));
        if (revived.back()) found += name;
    }
    for (xc_image *image : revived) xc_image_unref(image);
    return found;
}

// Eviction starts when the total reaches the limit (>=) and stops once it is
// within it (<=), the least recently released first; a 10 x 10 image costs
// 400 bytes, a 5 x 5 one 100, one on the caller's pixels nothing.
TEST(ImageCache, ReleasesAndLimitsEvictTheLeastRecentlyReleased) {
    release("a");  // limit zero keeps nothing
    xc_set_image_cache_size(800);
    release("bc");  // reaches 800: b goes
    EXPECT_EQ(cached("abc"), "c");
    xc_set_image_cache_size(2000);
    release("def");
    release("g", 5);
    EXPECT_EQ(cached("d"), "d");   // revived and released again: now the newest
    xc_set_image_cache_size(500);  // 1700: evicts c, e and f, leaving exactly 500
    xc_set_image_cache_size(500);  // the same limit again starts no eviction
    EXPECT_EQ(cached("cdefg"), "dg");
    xc_set_image_cache_size(1);
    release("xyz", 100, true);
    EXPECT_EQ(cached("dgxyz"), "xyz");
}

TEST(ImageCache, InvalidatingTakesActiveAndReleasedImagesOutOfTheCache) {
    xc_set_image_cache_size(1000);
    xc_image *active = file_image("a");
    xc_image *released = file_image("b");
    xc_image_unref(released);
    xc_image_invalidate(active);
    xc_image_invalidate(released);
    xc_image_unref(active);  // destroyed, not cached
    EXPECT_EQ(cached("ab"), "");
    // The released one is handed back to whoever holds it.
    EXPECT_EQ(released->no_cache, 1u);
    xc_image_unref(xc_image_ref(released));
}

TEST(ImageCache, RevivalMakesAnImageActiveAndPrintsIfItIsMarkedNoCache) {
    xc_set_image_cache_size(1000);
    xc_image *image = file_image("odd.png");
    xc_image_unref(image);
    image->no_cache = 1;  // only a caller poking the record gets here
    testing::internal::CaptureStdout();
    EXPECT_EQ(xc_image_lookup_in_cache("odd.png"), image);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "xc_image_lookup_in_cache: bad filename(odd.png) is set no-cache but it is in "
              "cache !!!!!!!!!!!!!!!!!!!!!!!!!!!!!!\n");
    EXPECT_EQ(xc_image_lookup_in_cache("odd.png"), image);  // now from the active table
    EXPECT_EQ(xc_image_lookup_in_cache(nullptr), nullptr);
}

TEST(ImageCacheDeathTest, CachingALiveImageOrCachingOrRevivingAnAnimationAborts) {
    xc_image *image = file_image("a.gif");
    EXPECT_DEATH(fbc::image_add_cache(image),
                 "image_func:[0-9]+: image_add_cache: Assertion `im->ref == 0' failed");
    image->ref = 0;
    image->is_ani = 1;
    EXPECT_DEATH(fbc::image_add_cache(image),
                 "image_func:[0-9]+: image_add_cache: Assertion `im->is_ani == 0' failed");
    // An animation among the released images cannot be revived either.
    xc_set_image_cache_size(1000);
    image->is_ani = 0;
    image->ref = 1;
    xc_image_unref(image);
    image->is_ani = 1;
    EXPECT_DEATH(xc_image_lookup_in_cache("a.gif"),
                 "image_func:[0-9]+: xc_image_add_active: Assertion `im->is_ani == 0' failed");
}

TEST(ImageInfo, RecordedInformationFillsTheImageAndOnlyPngAndJpgAreNamed) {
    xc_image *image = xc_image_new();
    EXPECT_EQ(xc_image_load_cached_info(image, "a.img"), -1);
    const std::string types[] = {"png", "jpg", "bmp"};
    const char *const names[] = {"png", "jpg", nullptr};
    for (uint32_t i = 0; i < 3; ++i) {
        // Each record replaces the one before; only bit 0 of the alpha value counts.
        xg_image_set_info("a.img", 7, 9, i + 1, types[i].c_str());
        ASSERT_EQ(xc_image_load_cached_info(image, "a.img"), 0);
        EXPECT_EQ(std::tuple(image->width, image->height, image->rowstride), std::tuple(7, 9, 28));
        EXPECT_EQ(image->has_alpha, (i + 1) & 1) << types[i];
        EXPECT_STREQ(image->type_name, names[i]);
        EXPECT_NE(image->type_name, types[i].c_str());  // the library's own constant
    }
    xc_image_unref(image);
}

}  // namespace
