#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "fbcompose/image.h"
#include "fbcompose/loader.h"

namespace {

// The library's munmap calls land here first, so the tests can see them.
struct {
    void *address;
    size_t length;
} unmapped;

}  // namespace

extern "C" int munmap(void *address, size_t length) noexcept {
    unmapped = {address, length};
    static auto *real = reinterpret_cast<int (*)(void *, size_t)>(dlsym(RTLD_NEXT, "munmap"));
    return real(address, length);
}

namespace {

// What the constructors decide about a record, in one comparable value.
struct Shape {
    int32_t rowstride;
    uint32_t format, depth, has_alpha, foreign_data, no_cache;
    bool operator==(const Shape &) const = default;
};

Shape shape(const xc_image *i) {
    return {i->rowstride, i->format, i->depth, i->has_alpha, i->foreign_data, i->no_cache};
}

void PrintTo(const Shape &s, std::ostream *os) {
    *os << "{rowstride " << s.rowstride << " format " << s.format << " depth " << s.depth
        << " alpha " << s.has_alpha << " foreign " << s.foreign_data << " no_cache "
        << s.no_cache << "}";
}

TEST(Image, NewIsZeroAndCreateIsAnOpaqueCanvas) {
    xc_image *blank = xc_image_new();
    EXPECT_EQ(blank->ref, 1);
    EXPECT_EQ(blank->data, nullptr);
    EXPECT_EQ(shape(blank), (Shape{0, 0, 0, 0, 0, 0}));
    xc_image_unref(blank);

    xc_image *canvas = xc_image_create(3, 2);
    EXPECT_EQ(canvas->ref, 1);
    EXPECT_EQ(shape(canvas), (Shape{12, 1, 24, 0, 0, 0}));
    ASSERT_NE(canvas->data, nullptr);
    std::memset(canvas->data, 0xAB, 24);  // the whole block is ours
    xc_image_unref(canvas);
}

TEST(Image, AllocDataDefaultsTheRowstrideOnlyWhenUnset) {
    xc_image *image = xc_image_new();
    image->width = 5;
    image->height = 3;
    ASSERT_NE(xc_image_alloc_data(image), nullptr);
    EXPECT_EQ(image->rowstride, 20);
    std::free(image->data);
    image->rowstride = 64;
    ASSERT_NE(xc_image_alloc_data(image), nullptr);
    EXPECT_EQ(image->rowstride, 64);
    std::memset(image->data, 0, 64 * 3);
    xc_image_unref(image);
}

TEST(Image, NewFromDataStoresTheDepthArgumentAsGiven) {
    struct Case {
        int32_t depth;
        int copy, foreign;
        Shape expected;
    };
    const Case cases[] = {
        {16, 0, 1, {16, 3, 16, 0, 1, 1}},
        {32, 0, 0, {32, 0, 32, 1, 0, 1}},
        {1, 1, 0, {32, 0, 1, 1, 0, 1}},   // depth 1 means alpha, and stays 1
        {24, 1, 0, {32, 1, 24, 0, 0, 1}},  // a copy is a canvas underneath
        {24, 0, 0, {32, 0, 24, 0, 0, 1}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << "depth " << c.depth << " copy " << c.copy);
        auto *pixels = static_cast<uint32_t *>(std::malloc(8 * 4 * 4));
        for (int i = 0; i < 32; ++i) pixels[i] = 0x01020304u + static_cast<uint32_t>(i);
        xc_image *image = xc_image_new_from_data(8, 4, pixels, c.depth, c.copy, c.foreign);
        EXPECT_EQ(shape(image), c.expected);
        EXPECT_EQ(image->data == reinterpret_cast<uint8_t *>(pixels), !c.copy);
        EXPECT_EQ(0, std::memcmp(image->data, pixels, 8 * 4 * 4));
        xc_image_unref(image);
        // The record freed the block only if it owned it; the leak checker
        // and the double-free check see any other outcome.
        if (c.copy || c.foreign) std::free(pixels);
    }

    xc_image *fresh = xc_image_new_from_data(4, 5, nullptr, 32, 0, 0);
    ASSERT_NE(fresh->data, nullptr);
    std::memset(fresh->data, 1, 4 * 5 * 4);
    xc_image_unref(fresh);
}

TEST(Image, NewWithDataTakesRowLengthFromFormatUnlessGiven) {
    struct Case {
        uint32_t format;
        int32_t rowstride_arg;
        Shape expected;
    };
    const Case cases[] = {
        {0, 0, {40, 0, 32, 1, 0, 1}},   {1, 0, {40, 1, 32, 0, 0, 1}},
        {2, 0, {30, 2, 24, 0, 0, 1}},   {3, 0, {20, 3, 16, 0, 0, 1}},
        {5, 0, {40, 5, 32, 0, 0, 1}},   {8, 0, {40, 8, 18, 0, 0, 1}},
        {9, 0, {40, 9, 32, 0, 0, 1}},   {2, 100, {100, 2, 24, 0, 0, 1}},
        {3, 100, {100, 3, 16, 0, 0, 1}},
    };
    for (const Case &c : cases) {
        xc_image *image = xc_image_new_with_data(10, 3, nullptr, c.format, 0, 0, c.rowstride_arg);
        EXPECT_EQ(shape(image), c.expected) << "format " << c.format;
        ASSERT_NE(image->data, nullptr);
        std::memset(image->data, 0, static_cast<size_t>(c.expected.rowstride) * 3);
        xc_image_unref(image);
    }
}

TEST(Image, CopyMarkedForeignIsNeverFreedByTheRecord) {
    std::vector<uint8_t> pixels(12 * 2, 7);
    xc_image *image = xc_image_new_with_data(4, 2, pixels.data(), 2, 1, 1, 0);
    ASSERT_NE(image->data, pixels.data());
    EXPECT_EQ(image->data[23], 7);
    EXPECT_EQ(image->foreign_data, 1u);
    uint8_t *block = image->data;
    xc_image_unref(image);
    std::free(block);  // the leak checker would report it had the record freed it too
}

TEST(Image, AbsurdSizesGiveNoPixelsRatherThanAWrappedBlock) {
    xc_image *images[] = {
        xc_image_create(0x40000000, 2),
        xc_image_new_from_data(70000, 70000, nullptr, 32, 0, 0),
        xc_image_new_with_data(-5, 4, nullptr, 0, 1, 0, 0),
    };
    for (xc_image *image : images) {
        EXPECT_EQ(image->data, nullptr);
        xc_image_unref(image);
    }
}

TEST(Image, PointerStepsTwoBytesAtDepth16AndFourOtherwise) {
    struct Case {
        xc_image *image;
        ptrdiff_t offset;  // of pixel (3, 2)
    };
    const Case cases[] = {
        {xc_image_new_from_data(10, 10, nullptr, 32, 0, 0), 2 * 40 + 12},
        {xc_image_new_from_data(10, 10, nullptr, 16, 0, 0), 2 * 20 + 6},
        {xc_image_new_with_data(10, 10, nullptr, 2, 0, 0, 0), 2 * 30 + 12},  // 24-bit too
    };
    for (const Case &c : cases) {
        EXPECT_EQ(static_cast<uint8_t *>(xc_image_pointer(c.image, 3, 2)) - c.image->data, c.offset);
        xc_image_unref(c.image);
    }
}

TEST(Image, RefCountsAndOneReleaseTooManyPrintsAndKeepsTheRecord) {
    xc_image *image = xc_image_new_from_data(2, 2, nullptr, 32, 0, 0);
    EXPECT_EQ(xc_image_ref(image), image);
    EXPECT_EQ(image->ref, 2);
    EXPECT_EQ(xc_image_ref(nullptr), nullptr);
    xc_image_unref(image);
    image->ref = 0;
    testing::internal::CaptureStdout();
    xc_image_unref(image);
    char expected[128];
    std::snprintf(expected, sizeof expected,
                  "!!!!!!!!!!!!!!!!!!!!!!!!!!!! image ref(%p) is negative: -1\n",
                  static_cast<void *>(image));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), expected);
    EXPECT_EQ(image->ref, -1);  // still readable: not freed
    image->ref = 1;
    xc_image_unref(image);
}

TEST(Image, ForeignPixelsAreUnmappedOnlyWhenMapped) {
    const size_t length = 4096;
    void *map = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(map, MAP_FAILED);
    xc_image *plain = xc_image_new_with_data(16, 8, map, 0, 0, 1, 256);
    unmapped = {};
    xc_image_unref(plain);
    EXPECT_EQ(unmapped.address, nullptr);

    xc_image *mapped = xc_image_new_with_data(16, 8, map, 0, 0, 1, 256);
    mapped->mapped = 1;
    xc_image_unref(mapped);
    EXPECT_EQ(unmapped.address, map);
    EXPECT_EQ(unmapped.length, 256u * 8u);  // rowstride x height
    munmap(map, length);
}

int released = 0;
void count_release(xc_image *image) {
    ++released;
    std::free(image->loader_data);
}

TEST(Image, DestroyCallsTheLoaderReleaseOperation) {
    xc_image_loader loader{};
    loader.release = count_release;
    xc_image *image = xc_image_create(1, 1);
    image->loader = &loader;
    image->loader_data = std::malloc(16);
    EXPECT_EQ(xc_image_has_alpha(image), 0);
    xc_image_unref(image);
    EXPECT_EQ(released, 1);
}

}  // namespace
