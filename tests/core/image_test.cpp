#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <tuple>
#include <utility>

#include "fbcompose/image.h"

// The library's munmap calls land here first, so the tests can see them.
static std::pair<void *, size_t> unmapped;
extern "C" int munmap(void *address, size_t length) noexcept {
    unmapped = {address, length};
    static auto *real = reinterpret_cast<int (*)(void *, size_t)>(dlsym(RTLD_NEXT, "munmap"));
    return real(address, length);
}

namespace {

// What a constructor decides: rowstride, format, depth, alpha, foreign, no_cache.
using Shape = std::tuple<int32_t, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t>;
Shape shape(const xc_image *i) {
    return {i->rowstride, i->format, i->depth, i->has_alpha, i->foreign_data, i->no_cache};
}

// Pixels passed in by the caller: static, so the record freeing them aborts.
uint32_t caller[16] = {0x01020304u, 0x05060708u};

// Where a record's pixels are: none, its own fresh block, its own copy of
// the caller's, or the caller's block itself.
enum Pixels { kNone, kOwn, kCopy, kCallers };

TEST(Image, ConstructorsDecideTheRecordAndWhereItsPixelsAre) {
    struct Case {
        xc_image *image;
        Shape expected;
        Pixels pixels;
    };
    const Case cases[] = {
        // The depth argument is stored as given: depth 1 means alpha and stays 1.
        {xc_image_new_from_data(4, 4, caller, 16, 0, 1), {8, 3, 16, 0, 1, 1}, kCallers},
        {xc_image_new_from_data(4, 4, caller, 1, 1, 0), {16, 0, 1, 1, 0, 1}, kCopy},
        {xc_image_new_from_data(4, 4, caller, 24, 1, 0), {16, 1, 24, 0, 0, 1}, kCopy},
        {xc_image_new_from_data(4, 4, nullptr, 24, 0, 0), {16, 0, 24, 0, 0, 1}, kOwn},
        // Row length follows the format unless given; a given one survives a copy.
        {xc_image_new_with_data(10, 3, nullptr, 0, 0, 0, 0), {40, 0, 32, 1, 0, 1}, kOwn},
        {xc_image_new_with_data(10, 3, nullptr, 2, 0, 0, 0), {30, 2, 24, 0, 0, 1}, kOwn},
        {xc_image_new_with_data(10, 3, nullptr, 3, 0, 0, 0), {20, 3, 16, 0, 0, 1}, kOwn},
        {xc_image_new_with_data(10, 3, nullptr, 8, 0, 0, 0), {40, 8, 18, 0, 0, 1}, kOwn},
        {xc_image_new_with_data(10, 3, nullptr, 3, 1, 0, 100), {100, 3, 16, 0, 0, 1}, kOwn},
        // A copy marked foreign is never freed by the record either.
        {xc_image_new_with_data(4, 4, caller, 0, 1, 1, 0), {16, 0, 32, 1, 1, 1}, kCopy},
        // Absurd sizes give no pixels rather than a block sized by a wrapped product.
        {xc_image_create(0x40000000, 2), {0, 1, 24, 0, 0, 0}, kNone},
        {xc_image_new_from_data(70000, 70000, nullptr, 32, 0, 0), {280000, 0, 32, 1, 0, 1}, kNone},
        {xc_image_new_with_data(-5, 4, nullptr, 0, 1, 0, 0), {0, 0, 32, 1, 0, 1}, kNone},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << "row " << &c - cases);
        uint8_t *block = c.image->data;
        EXPECT_EQ(shape(c.image), c.expected);
        ASSERT_EQ(block != nullptr, c.pixels != kNone);
        EXPECT_EQ(block == reinterpret_cast<uint8_t *>(caller), c.pixels == kCallers);
        EXPECT_TRUE(c.pixels != kCopy || std::memcmp(block, caller, sizeof caller) == 0);
        if (block) {  // a pixel's address steps two bytes at depth 16, four at every other one
            EXPECT_EQ(static_cast<uint8_t *>(xc_image_pointer(c.image, 1, 1)) - block,
                      std::get<0>(c.expected) + (std::get<2>(c.expected) == 16 ? 2 : 4));
        }
        // The sanitizer build checks that the whole block is the record's.
        if (c.pixels == kOwn) std::memset(block, 0xAB, std::get<0>(c.expected) * c.image->height);
        const bool callers_copy = c.pixels == kCopy && c.image->foreign_data;
        xc_image_unref(c.image);
        if (callers_copy) std::free(block);
    }
}

TEST(Image, OneReleaseTooManyPrintsAndKeepsTheRecord) {
    xc_image *image = xc_image_create(2, 2);
    image->ref = 0;
    testing::internal::CaptureStdout();
    xc_image_unref(image);
    char expected[96];
    std::snprintf(expected, sizeof expected,
                  "!!!!!!!!!!!!!!!!!!!!!!!!!!!! image ref(%p) is negative: -1\n",
                  static_cast<void *>(image));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), expected);
    EXPECT_EQ(image->ref, -1);  // still readable: not freed
    image->ref = 1;
    xc_image_unref(image);
}

TEST(Image, DestroyUnmapsOnlyMappedForeignPixels) {
    void *map = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(map, MAP_FAILED);
    for (uint32_t mapped : {0u, 1u}) {
        xc_image *image = xc_image_new_with_data(16, 8, map, 0, 0, 1, 256);
        image->mapped = mapped;
        unmapped = {};
        xc_image_unref(image);
        EXPECT_EQ(unmapped.first, mapped ? map : nullptr);
    }
    EXPECT_EQ(unmapped.second, 256u * 8u);  // rowstride x height
    munmap(map, 4096);
}

}  // namespace
