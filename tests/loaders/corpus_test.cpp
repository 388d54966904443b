// Every file of the shared corpus, one test per MANIFEST.tsv row: files that
// must decode load and match their reference pixels, files that must be
// rejected fail cleanly, and the others load or fail without harm (the
// sanitizer build checks the harm).
#include <gtest/gtest.h>

#include <string>

#include "corpus_support.hpp"
#include "fbcompose/image.h"
#include "fbcompose/loader.h"

namespace {

using fbc_test::CorpusRow;

class CorpusFile : public testing::TestWithParam<CorpusRow> {
protected:
    void SetUp() override { xc_image_init(); }
};

TEST_P(CorpusFile, LoadsAsTheManifestSays) {
    const CorpusRow &row = GetParam();
    const std::string file = fbc_test::corpus_path(row.path);
    testing::internal::CaptureStdout();
    xc_image *image = xc_image_new_from_file(file.c_str());
    const int loaded = image ? xc_image_load_data(image) : -1;
    testing::internal::GetCapturedStdout();

    if (row.expected == "reject") {
        EXPECT_TRUE(loaded < 0) << "accepted a file it must refuse";
        if (image) {
            EXPECT_EQ(image->data, nullptr);
        }
    } else if (row.expected == "decode") {
        ASSERT_NE(image, nullptr);
        EXPECT_GE(loaded, 0);
        ASSERT_NE(image->data, nullptr);
        if (row.width >= 0) {
            EXPECT_EQ(image->width, row.width);
            EXPECT_EQ(image->height, row.height);
        }
        if (!row.reference.empty()) {
            const auto expected = fbc_test::stored_reference(row, row.reference);
            ASSERT_EQ(expected.size(), static_cast<size_t>(image->width) * image->height);
            fbc_test::expect_pixels(image, expected, fbc_test::tolerance_of(row));
            fbc_test::expect_alpha_flags(image, row, expected);
        }
    } else if (image && image->data) {
        // Either outcome is fine; a decoded image must still be whole.
        EXPECT_GT(image->width, 0);
        EXPECT_GT(image->height, 0);
        EXPECT_GE(image->rowstride, image->width * 4);
    }
    if (image) xc_image_unref(image);
}

INSTANTIATE_TEST_SUITE_P(Manifest, CorpusFile, testing::ValuesIn(fbc_test::corpus_rows()),
                         [](const testing::TestParamInfo<CorpusRow> &param) {
                             return fbc_test::test_name(param.param.path);
                         });

}  // namespace
