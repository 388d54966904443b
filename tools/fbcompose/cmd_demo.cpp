// fbcompose demo: composes a realistic device screen with the library alone,
// animates it for a few frames, and sends only the damaged tiles of each
// frame to the panel: one in memory, written to files, or a real one.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "assets.hpp"
#include "cli.hpp"
#include "commands.hpp"
#include "image_io.hpp"
#include "outputs.hpp"
#include "panels.hpp"
#include "progress.hpp"

namespace fbctool {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kCommand = "demo";
constexpr const char *kMainFont = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
constexpr const char *kFallbackFont = "/usr/share/fonts/truetype/wqy/wqy-microhei.ttc";

constexpr const char *kHelp =
    "usage: fbcompose demo [-o screen.png] [--size WxH] [--depth 16|18|32]\n"
    "                      [--rotate 0|90|270] [--frames N]\n"
    "       fbcompose demo --fb DEVICE [-o screen.png] [--rotate 0|90|270] [--frames N]\n\n"
    "Composes a sample device screen (a JPEG background, PNG icons with alpha,\n"
    "tinted and recoloured images, a BMP, an animated GIF, a matte-fitted\n"
    "thumbnail, shapes, text with a fallback font), then animates it. Each\n"
    "frame's damaged tiles are converted into the panel format, and one line per\n"
    "frame names them.\n\n"
    "Without --fb the panel is in memory: at the end the demo writes its frame\n"
    "buffer (screen.raw beside the preview; the layout of 'fbcompose convert\n"
    "--help') and a preview decoded back from it (PNG or JPEG by its suffix).\n"
    "Default: demo/screen.png, 800x480, RGB565, no rotation, 12 frames.\n\n"
    "With --fb the frames go to a Linux frame-buffer device such as /dev/fb0, at\n"
    "the pace of the animation; its size and pixel format come from the device,\n"
    "--rotate says how the panel is mounted, and only the JPEG background is\n"
    "written (into the folder of -o).\n";
constexpr option_spec kOptions[] = {{"-o", true},       {"--size", true},   {"--depth", true},
                                    {"--rotate", true}, {"--frames", true}, {"--fb", true}};
constexpr command_spec kSpec{kCommand, kOptions, kHelp};

struct options {
    std::string preview = "demo/screen.png", raw, fb;
    int32_t width = 800, height = 480, depth = 16, rotation = 0, frames = 12;
};

int read_options(const command_line &a, options &o) {
    if (!a.operands.empty())
        return usage_error(kCommand, cat({"unexpected argument '", a.operands[0], "'"}));
    o.preview = a.value("-o", o.preview);
    o.fb = a.value("--fb");
    if (!o.fb.empty() && (a.has("--size") || a.has("--depth")))
        return usage_error(kCommand, "--size and --depth come from the device with --fb");
    const std::string size = a.value("--size", "800x480");
    if (!parse_size(size, o.width, o.height) || o.width < 64 || o.height < 64)
        return usage_error(kCommand, cat({"bad --size '", size, "' (at least 64x64)"}));
    if (!parse_depth(a.value("--depth", "16"), o.depth))
        return usage_error(kCommand,
                           cat({"bad --depth '", a.value("--depth"), "' (16, 18 or 32)"}));
    if (!parse_rotation(a.value("--rotate", "0"), o.rotation))
        return usage_error(kCommand,
                           cat({"bad --rotate '", a.value("--rotate"), "' (0, 90 or 270)"}));
    if (!parse_int(a.value("--frames", "12"), 1, 10000, o.frames))
        return usage_error(kCommand,
                           cat({"bad --frames '", a.value("--frames"), "' (1 to 10000)"}));
    o.raw = fs::path(o.preview).replace_extension(".raw").string();
    return 0;
}

// A landscape painted pixel by pixel: the stand-in for a photograph, saved as
// JPEG and loaded back like any asset.
fbcompose::image paint_landscape(int32_t w, int32_t h) {
    fbcompose::image image = fbcompose::image::create(w, h);
    if (!image) return image;
    for (int32_t y = 0; y < h; ++y) {
        uint32_t *row = image.row(y).data();
        for (int32_t x = 0; x < w; ++x) {
            const double u = static_cast<double>(x) / w, v = static_cast<double>(y) / h;
            const double hill = 0.62 + 0.08 * std::sin(u * 9.0) + 0.05 * std::sin(u * 23.0 + 1.0);
            const double sun = std::hypot(u - 0.93, v - 0.28);
            double r, g, b;
            if (v > hill) {
                const double shade = 0.6 + 0.4 * std::sin(u * 40.0 + v * 13.0);
                r = 40 + 30 * shade, g = 110 + 60 * shade, b = 50 + 20 * shade;
            } else if (sun < 0.08) {
                r = 255, g = 236, b = 160;
            } else {
                r = 80 + 120 * v, g = 140 + 80 * v, b = 230 - 20 * v;
                const double glow = std::max(0.0, 0.25 - sun) * 300.0;
                r += glow, g += glow * 0.7;
            }
            auto clamp = [](double c) {
                return static_cast<uint32_t>(std::min(255.0, std::max(0.0, c)));
            };
            row[x] = 0xFF000000u | clamp(r) << 16 | clamp(g) << 8 | clamp(b);
        }
    }
    return image;
}

struct scene {
    fbcompose::image canvas;   // what the frame shows now
    fbcompose::image base;     // the static part, to restore under animation
    fbcompose::image spinner;  // animated GIF
    fbcompose::font title, body;
    xg_rect spinner_rect{}, counter_rect{};
};

void blit_whole(const fbcompose::image &src, const fbcompose::image &dst, int32_t x, int32_t y,
                int32_t w, int32_t h, uint32_t color = 0xFFFFFFFFu) {
    const xg_area clip = dst.area();
    xc_image_blit(src.get(), dst.get(), &clip, 0, 0, src.width(), src.height(), x, y, w, h, 1,
                  color);
}

void draw_text(scene &s, const fbcompose::font &font, int32_t x, int32_t y, const char *utf8,
               uint32_t color) {
    if (!font) return;
    const std::u16string text = fbcompose::widen(utf8);
    const xg_area clip = s.canvas.area();
    xc_font_draw(s.canvas.get(), &clip, font.get(), x, y, fbcompose::units(text), -1,
                 xc_paint{color, nullptr, 0, 0});
}

// The photograph: painted, saved as JPEG beside the preview, loaded back.
fbcompose::image background(const std::string &out_dir, outputs &written) {
    const std::string jpeg = cat({out_dir, "/background.jpg"});
    const fbcompose::image landscape = paint_landscape(640, 400);
    if (!landscape || !written.save_image(jpeg, landscape.get(), "quality=85")) return {};
    return load_image(jpeg);
}

// Icons with alpha, one tinted and enlarged, one recoloured to grey; a BMP
// badge; a thumbnail matte-fitted from the background.
bool draw_pictures(scene &s, const std::string &assets, const fbcompose::image &photo) {
    const int32_t W = s.canvas.width();
    const char *names[] = {"icon-disc.png", "icon-ring.png", "icon-star.png", "icon-tile.png"};
    std::vector<fbcompose::image> icons;
    for (const char *name : names) {
        icons.push_back(load_image(cat({assets, "/", name})));
        if (!icons.back()) return false;
        blit_whole(icons.back(), s.canvas, 40 + (static_cast<int32_t>(icons.size()) - 1) * 64, 76,
                   48, 48);
    }
    blit_whole(icons[2], s.canvas, 40, 140, 96, 96, 0xFFFF6090u);
    const float grey[16] = {0.299f, 0.299f, 0.299f, 0, 0.587f, 0.587f, 0.587f, 0,
                            0.114f, 0.114f, 0.114f, 0, 0,      0,      0,      0};
    const int32_t low[3] = {0, 0, 0}, high[3] = {255, 255, 255};
    const auto recoloured = fbcompose::image::adopt(
        xc_image_new_from_color_transformed_image(icons[0].get(), grey, low, high));
    if (recoloured) {
        // The transform copies alpha into an opaque result; this icon's
        // alpha is real, so let the blit blend with it.
        recoloured->has_alpha = 1;
        recoloured->format = 0;
        blit_whole(recoloured, s.canvas, 150, 164, 48, 48);
    }
    const fbcompose::image badge = load_image(cat({assets, "/badge.bmp"}));
    if (!badge) return false;
    blit_whole(badge, s.canvas, W / 2 + 30, 76, badge.width(), badge.height());
    const auto thumb = fbcompose::image::adopt(xc_image_fit_size(photo.get(), 120, 120, "matte"));
    if (thumb) blit_whole(thumb, s.canvas, W / 2 + 170, 76, thumb.width(), thumb.height());
    return true;
}

// A chart: grid lines, a polyline and a filled polygon under it.
void draw_chart(scene &s) {
    const int32_t W = s.canvas.width(), H = s.canvas.height();
    const xg_area clip = s.canvas.area();
    const int32_t cx = W / 2 + 30, cy = H - 150, cw = W / 2 - 70, ch = 100;
    for (int32_t i = 0; i <= 4; ++i)
        xc_line_draw(s.canvas.get(), &clip, cx, cy + i * ch / 4, cx + cw, cy + i * ch / 4,
                     0x60FFFFFFu);
    std::vector<xg_point> points;
    for (int32_t i = 0; i <= 12; ++i) {
        const double v = 0.5 + 0.35 * std::sin(i * 0.7) + 0.1 * std::cos(i * 2.1);
        points.push_back({cx + i * cw / 12, cy + ch - static_cast<int32_t>(v * ch)});
    }
    xg_list *polygon = nullptr;
    xg_point corners[2] = {{cx + cw, cy + ch}, {cx, cy + ch}};
    for (xg_point &p : points) polygon = xg_list_append(polygon, &p);
    polygon = xg_list_append(polygon, &corners[0]);
    polygon = xg_list_append(polygon, &corners[1]);
    xc_polygon_draw(s.canvas.get(), &clip, 0, 0, polygon, 0x8040C0FFu);
    xg_list_free(polygon);
    for (size_t i = 1; i < points.size(); ++i)
        xc_line_draw(s.canvas.get(), &clip, points[i - 1].x, points[i - 1].y, points[i].x,
                     points[i].y, 0xFFFFFFFFu);
}

// Everything that does not move: background, panels, pictures, shapes, text.
bool compose_static(scene &s, const std::string &assets, const std::string &out_dir,
                    outputs &written) {
    const int32_t W = s.canvas.width(), H = s.canvas.height();
    const xg_area clip = s.canvas.area();
    const fbcompose::image photo = background(out_dir, written);
    if (!photo) return false;
    blit_whole(photo, s.canvas, 0, 0, W, H);

    // Top bar and two cards: translucent fills over the picture.
    for (const auto &[area, color] :
         {std::pair{xg_area{0, 0, W, 40}, 0xA0101820u},
          std::pair{xg_area{20, 60, W / 2 - 10, H - 20}, 0x90FFFFFFu},
          std::pair{xg_area{W / 2 + 10, 60, W - 20, H - 20}, 0x60000000u}}) {
        xg_area fill = area;
        xc_rectangle_draw(s.canvas.get(), &clip, &fill, color);
    }
    if (!draw_pictures(s, assets, photo)) return false;
    draw_chart(s);
    draw_text(s, s.title, 14, 28, "fbcompose demo", 0xFFFFFFFFu);
    draw_text(s, s.body, 40, 270,
              "Living room  21.5 \xC2\xB0"
              "C",
              0xFF202020u);
    draw_text(s, s.body, 40, 300, "Humidity 48 %  \xE2\x80\xA2  Air good", 0xFF202020u);
    // The main font has no CJK; these come from the fallback font.
    draw_text(s, s.body, 40, 330,
              "\xE4\xBB\x8A\xE6\x97\xA5\xE3\x81\xAF\xE6\x99\xB4\xE3\x82\x8C "
              "(sunny today)",
              0xFF202020u);
    return true;
}

// The parts that change per frame: the GIF spinner and a frame counter.
// Returns how long the frame stays (the spinner frame's delay, ms).
int32_t compose_frame(scene &s, int32_t frame, fbcompose::damage &damage) {
    const xg_area clip = s.canvas.area();
    for (const xg_rect &r : {s.spinner_rect, s.counter_rect}) {
        xc_image_blit(s.base.get(), s.canvas.get(), &clip, r.x, r.y, r.w, r.h, r.x, r.y, r.w, r.h,
                      0, 0xFFFFFFFFu);
        damage.add(r);
    }
    int32_t delay = xc_image_get_delay(s.spinner.get()), x, y, w, h;
    if (frame > 0) xc_image_next_frame(s.spinner.get(), &delay, &x, &y, &w, &h);
    blit_whole(s.spinner, s.canvas, s.spinner_rect.x, s.spinner_rect.y, s.spinner.width(),
               s.spinner.height());
    char counter[32];
    std::snprintf(counter, sizeof counter, "frame %d", frame);
    draw_text(s, s.title, s.counter_rect.x, s.counter_rect.y + 24, counter, 0xFFFFD040u);
    return delay;
}

std::string describe(const std::vector<xg_rect> &rects) {
    std::string out;
    for (const xg_rect &r : rects) {
        char item[64];
        std::snprintf(item, sizeof item, " %d,%d %dx%d", r.x, r.y, r.w, r.h);
        out += item;
    }
    return out;
}

// Fonts, canvas, static picture and spinner: 0, or kFailed after a message.
int build_scene(scene &s, int32_t width, int32_t height, const std::string &out_dir,
                outputs &written) {
    const std::string assets = find_assets();
    if (assets.empty()) return fail("cannot find the demo's assets (set FBCOMPOSE_ASSETS)");
    xc_set_image_cache_size(4 << 20);
    xc_font_set_cache(1 << 20);
    xc_font_set_fallback(kFallbackFont);
    s.title = fbcompose::font(kMainFont, 14);
    s.body = fbcompose::font(kMainFont, 11);
    if (!s.title || !s.body)
        std::fprintf(stderr, "fbcompose demo: no font at %s; drawing without text\n", kMainFont);
    s.canvas = fbcompose::image::create(width, height);
    if (!s.canvas) return fail("no memory for the canvas");
    if (!compose_static(s, assets, out_dir, written)) return kFailed;
    s.base =
        fbcompose::image::adopt(xc_image_new_from_data(width, height, s.canvas->data, 24, 1, 0));
    s.spinner = load_image(cat({assets, "/spinner.gif"}));
    s.spinner_rect = {width - 90, height - 80, 64, 64};
    s.counter_rect = {width - 140, 6, 130, 30};
    return s.base && s.spinner ? 0 : kFailed;
}

// Composes and sends every frame, on a device at the animation's pace: 0,
// or kFailed after a message.
int run_frames(scene &s, const options &o, fbcompose::panel &panel) {
    progress work(kCommand);
    fbcompose::damage damage(s.canvas.width(), s.canvas.height());
    for (int32_t frame = 0; frame < o.frames; ++frame) {
        work.at("frame", frame + 1, o.frames);
        const auto start = std::chrono::steady_clock::now();
        const int32_t delay = compose_frame(s, frame, damage);
        if (frame == 0) damage.add({0, 0, s.canvas.width(), s.canvas.height()});
        const std::vector<xg_rect> rects = damage.take_rects();
        if (panel.update(s.canvas, rects) < 0) return fail("the panel refused the canvas");
        const auto took = std::chrono::steady_clock::now() - start;
        std::printf("frame %d: %zu rect%s%s, %.2f ms\n", frame, rects.size(),
                    rects.size() == 1 ? "" : "s", describe(rects).c_str(),
                    std::chrono::duration<double, std::milli>(took).count());
        if (!o.fb.empty()) {
            std::fflush(stdout);
            std::this_thread::sleep_until(start + std::chrono::milliseconds(delay));
        }
    }
    return 0;
}

int write_results(const options &o, const memory_panel &screen, outputs &written) {
    if (!written.write_bytes(o.raw, screen.bytes().data(), screen.bytes().size())) return kFailed;
    if (!written.save_image(o.preview, decode_panel(screen).get())) return kFailed;
    written.keep();
    std::printf("panel frame buffer: %s (%dx%d, %d bits per pixel as %s, %zu bytes)\n",
                o.raw.c_str(), screen.width(), screen.height(), o.depth, pixel_layout(o.depth),
                screen.bytes().size());
    std::printf("preview picture:    %s\n", o.preview.c_str());
    return 0;
}

}  // namespace

int run_demo(int argc, char **argv) {
    command_line a;
    int status = 0;
    if (!a.read(kSpec, argc, argv, status)) return status;
    options o;
    outputs written(kCommand);
    if (int bad = read_options(a, o)) return bad;
    if (int bad = written.check_name(o.preview, output_kind::image)) return bad;
    const fs::path parent = fs::path(o.preview).parent_path();
    const std::string out_dir = parent.empty() ? std::string(".") : parent.string();
    std::error_code error;
    fs::create_directories(out_dir, error);
    if (error) return fail(cat({"cannot create folder '", out_dir, "': ", error.message()}));
    if (o.fb.empty()) {
        if (int bad = written.check(o.preview, output_kind::image)) return bad;
        if (int bad = written.check(o.raw, output_kind::bytes)) return bad;
    }
    if (xc_init() < 0) return fail("the font engine did not start");

    memory_panel screen;
    fbcompose::panel device;
    std::string problem;
    if (!o.fb.empty()) {
        device = open_device(o.fb, o.rotation);
        if (!device) return kFailed;
        if (device.canvas_width() < 64 || device.canvas_height() < 64)
            return fail(cat({"the panel '", o.fb, "' is smaller than the demo's 64x64"}));
        o.width = device.canvas_width();
        o.height = device.canvas_height();
    } else if (!screen.make(o.depth, o.rotation, o.width, o.height, problem)) {
        return fail(problem);
    }
    scene s;
    if (int failed = build_scene(s, o.width, o.height, out_dir, written)) return failed;
    if (int failed = run_frames(s, o, o.fb.empty() ? screen.panel() : device)) return failed;
    return o.fb.empty() ? write_results(o, screen, written) : (written.keep(), 0);
}

}  // namespace fbctool
