// Decode time of a 1920 x 1080 JPEG and PNG through the file front end
// (xc_image_new_from_file + xc_image_load_data), beside the bare library
// decode of the same file into BGRA rows, in the same run. The table at the
// end shows our overhead as the ratio of the two times.
#include <benchmark/benchmark.h>
#include <jpeglib.h>
#include <png.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "fbcompose/image.h"
#include "fbcompose/loader.h"

namespace {

constexpr int kWidth = 1920, kHeight = 1080;

// A photo-like test card: smooth gradients with a little texture, so both
// codecs see realistic data.
xc_image *test_card() {
    xc_image *image = xc_image_new_from_data(kWidth, kHeight, nullptr, 24, 0, 0);
    uint32_t noise = 12345;
    for (int y = 0; y < kHeight; ++y) {
        auto *row =
            reinterpret_cast<uint32_t *>(image->data + static_cast<size_t>(y) * image->rowstride);
        for (int x = 0; x < kWidth; ++x) {
            noise = noise * 1103515245u + 12345u;
            const uint32_t grain = (noise >> 28) & 7u;
            const uint32_t r = (x * 255 / kWidth + grain) & 0xFF, g = (y * 255 / kHeight) & 0xFF;
            const uint32_t b = ((x + y) / 12 * 9 + grain) & 0xFF;
            row[x] = 0xFF000000u | r << 16 | g << 8 | b;
        }
    }
    return image;
}

struct Files {
    std::string dir, jpeg, png;
};

const Files &files() {
    static const Files f = [] {
        Files made;
        std::string pattern =
            (std::filesystem::temp_directory_path() / "fbc-bench-XXXXXX").string();
        made.dir = mkdtemp(pattern.data());
        made.jpeg = made.dir + "/card.jpg";
        made.png = made.dir + "/card.png";
        xc_image *card = test_card();
        std::fflush(stdout);
        xc_image_save(card, made.jpeg.c_str(), nullptr, "quality=85");
        xc_image_save(card, made.png.c_str(), nullptr, nullptr);
        xc_image_unref(card);
        return made;
    }();
    return f;
}

// Ours: information, then pixels; the cache budget is 0, so every
// iteration decodes the file again.
void front_end(benchmark::State &state, const std::string &file) {
    for (auto _ : state) {
        xc_image *image = xc_image_new_from_file(file.c_str());
        if (!image || xc_image_load_data(image) < 0) state.SkipWithError("load failed");
        benchmark::DoNotOptimize(image->data);
        xc_image_unref(image);
    }
}

// Bare libjpeg-turbo with the same decoder settings, into a fresh block.
void bare_jpeg(benchmark::State &state) {
    for (auto _ : state) {
        FILE *in = std::fopen(files().jpeg.c_str(), "rb");
        jpeg_decompress_struct cinfo;
        jpeg_error_mgr errors;
        cinfo.err = jpeg_std_error(&errors);
        jpeg_create_decompress(&cinfo);
        jpeg_stdio_src(&cinfo, in);
        jpeg_read_header(&cinfo, TRUE);
        cinfo.do_fancy_upsampling = FALSE;
        cinfo.do_block_smoothing = FALSE;
        cinfo.out_color_space = JCS_EXT_BGRA;
        jpeg_start_decompress(&cinfo);
        const size_t stride = cinfo.output_width * 4;
        auto *pixels = static_cast<uint8_t *>(std::malloc(stride * cinfo.output_height));
        while (cinfo.output_scanline < cinfo.output_height) {
            JSAMPROW row = pixels + stride * cinfo.output_scanline;
            jpeg_read_scanlines(&cinfo, &row, 1);
        }
        jpeg_finish_decompress(&cinfo);
        jpeg_destroy_decompress(&cinfo);
        std::fclose(in);
        benchmark::DoNotOptimize(pixels);
        std::free(pixels);
    }
}

// Bare libpng: B, G, R plus filler, into a fresh block.
void bare_png(benchmark::State &state) {
    for (auto _ : state) {
        FILE *in = std::fopen(files().png.c_str(), "rb");
        png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        png_init_io(png, in);
        png_read_info(png, info);
        const png_uint_32 width = png_get_image_width(png, info),
                          height = png_get_image_height(png, info);
        png_set_bgr(png);
        png_set_filler(png, 255, PNG_FILLER_AFTER);
        auto *pixels = static_cast<uint8_t *>(std::malloc(size_t{width} * 4 * height));
        std::vector<png_bytep> rows(height);
        for (png_uint_32 y = 0; y < height; ++y) rows[y] = pixels + size_t{width} * 4 * y;
        png_read_image(png, rows.data());
        png_read_end(png, nullptr);
        png_destroy_read_struct(&png, &info, nullptr);
        std::fclose(in);
        benchmark::DoNotOptimize(pixels);
        std::free(pixels);
    }
}

class Collect : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run> &runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const auto &run : runs)
            if (!run.error_occurred) ms[run.benchmark_name()] = run.GetAdjustedRealTime();
    }
    std::map<std::string, double> ms;
};

}  // namespace

int main(int argc, char **argv) {
    xc_image_init();
    files();
    benchmark::RegisterBenchmark("jpeg/ours", front_end, files().jpeg)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("jpeg/bare", bare_jpeg)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("png/ours", front_end, files().png)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("png/bare", bare_png)->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    // The registry prints its list once; keep it out of the table.
    std::fflush(stdout);
    Collect report;
    benchmark::RunSpecifiedBenchmarks(&report);
    std::printf("\n| 1920x1080 | ours (ms) | bare (ms) | ours / bare |\n|---|---|---|---|\n");
    for (const char *format : {"jpeg", "png"}) {
        const double ours = report.ms[std::string(format) + "/ours"];
        const double bare = report.ms[std::string(format) + "/bare"];
        std::printf("| %s | %.2f | %.2f | %.3f |\n", format, ours, bare,
                    bare > 0 ? ours / bare : 0.0);
    }
    std::filesystem::remove_all(files().dir);
    benchmark::Shutdown();
    return 0;
}
