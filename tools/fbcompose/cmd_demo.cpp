// fbcompose demo: composes a realistic device screen with the library alone,
// animates it for a few frames, and sends only the damaged tiles of each
// frame through the panel converter.
#include <fbcompose/fbcompose.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "assets.hpp"
#include "cli.hpp"
#include "commands.hpp"
#include "panel.hpp"

namespace fbctool {
namespace {

constexpr std::string_view kCommand = "demo";
constexpr const char *kMainFont = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";
constexpr const char *kFallbackFont = "/usr/share/fonts/truetype/wqy/wqy-microhei.ttc";

struct options {
    std::string preview = "demo/screen.png";
    int32_t width = 800, height = 480, depth = 16, rotation = 0, frames = 12;
};

int help() {
    std::printf(
        "usage: fbcompose demo [-o screen.png] [--size WxH] [--depth 16|18|32]\n"
        "                      [--rotate 0|90|270] [--frames N]\n\n"
        "Composes a sample device screen (a JPEG background, PNG icons with alpha,\n"
        "tinted and recoloured images, a BMP, an animated GIF, a matte-fitted\n"
        "thumbnail, shapes, text with a fallback font), then animates it. Each\n"
        "frame's damaged tiles are converted into the panel format. Writes the\n"
        "panel frame buffer (.raw beside the preview), a PNG preview decoded back\n"
        "from the panel format, and one line per frame. Default: demo/screen.png,\n"
        "800x480, RGB565, no rotation, 12 frames.\n");
    return 0;
}

int parse(args &a, options &o) {
    std::string value;
    while (!a.empty()) {
        if (a.take_option("-o", o.preview)) continue;
        if (a.take_option("--size", value)) {
            if (!parse_size(value, o.width, o.height) || o.width < 64 || o.height < 64)
                return usage_error(kCommand, cat({"bad --size '", value, "' (at least 64x64)"}));
        } else if (a.take_option("--depth", value)) {
            if (!parse_depth(value, o.depth)) return usage_error(kCommand, cat({"bad --depth '", value, "'"}));
        } else if (a.take_option("--rotate", value)) {
            if (!parse_rotation(value, o.rotation))
                return usage_error(kCommand, cat({"bad --rotate '", value, "'"}));
        } else if (a.take_option("--frames", value)) {
            if (!parse_int(value, 1, 10000, o.frames))
                return usage_error(kCommand, cat({"bad --frames '", value, "'"}));
        } else {
            return usage_error(kCommand, cat({"unknown argument '", a.take(), "'"}));
        }
    }
    return 0;
}

// A landscape painted pixel by pixel: the stand-in for a photograph, saved as
// JPEG and loaded back like any asset.
xc_image *paint_landscape(int32_t w, int32_t h) {
    xc_image *image = xc_image_create(w, h);
    for (int32_t y = 0; y < h; ++y) {
        auto *row = static_cast<uint32_t *>(xc_image_pointer(image, 0, y));
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
            auto clamp = [](double c) { return static_cast<uint32_t>(std::min(255.0, std::max(0.0, c))); };
            row[x] = 0xFF000000u | clamp(r) << 16 | clamp(g) << 8 | clamp(b);
        }
    }
    return image;
}

// Loads a file image and its pixels, or reports which file failed.
xc_image *load(const std::string &path, std::string &problem) {
    xc_image *image = xc_image_new_from_file(path.c_str());
    if (!image || xc_image_load_data(image) < 0 || !image->data) {
        xc_image_unref(image);
        problem = cat({"cannot load '", path, "'"});
        return nullptr;
    }
    return image;
}

struct scene {
    xc_image *canvas = nullptr;      // what the frame shows now
    xc_image *base = nullptr;        // the static part, to restore under animation
    xc_image *spinner = nullptr;     // animated GIF
    xc_font *title = nullptr, *body = nullptr;
    xg_rect spinner_rect{}, counter_rect{};
    std::vector<xc_image *> owned;

    ~scene() {
        for (xc_image *image : owned) xc_image_unref(image);
        xc_image_unref(canvas);
        xc_image_unref(base);
        xc_image_unref(spinner);
        xc_font_free(title);
        xc_font_free(body);
    }
};

void blit_whole(xc_image *src, xc_image *dst, const xg_area &clip, int32_t x, int32_t y,
                int32_t w, int32_t h, uint32_t color = 0xFFFFFFFFu) {
    xc_image_blit(src, dst, &clip, 0, 0, src->width, src->height, x, y, w, h, 1, color);
}

void draw_text(scene &s, xc_font *font, int32_t x, int32_t y, const char *utf8, uint32_t color) {
    if (!font) return;
    uint16_t *text = xg_unicode_new_from_utf8(utf8);
    const xg_area clip{0, 0, s.canvas->width, s.canvas->height};
    xc_font_draw(s.canvas, &clip, font, x, y, text, -1, xc_paint{color, nullptr, 0, 0});
    std::free(text);
}

// Everything that does not move: background, panels, icons, pictures,
// shapes and text.
bool compose_static(scene &s, const std::string &assets, const std::string &out_dir,
                    std::string &problem) {
    const int32_t W = s.canvas->width, H = s.canvas->height;
    const xg_area clip{0, 0, W, H};

    xc_image *landscape = paint_landscape(640, 400);
    const std::string jpeg = cat({out_dir, "/background.jpg"});
    const int saved = xc_image_save(landscape, jpeg.c_str(), nullptr, "quality=85");
    xc_image_unref(landscape);
    if (saved < 0) {
        problem = cat({"cannot write '", jpeg, "'"});
        return false;
    }
    xc_image *background = load(jpeg, problem);
    if (!background) return false;
    s.owned.push_back(background);
    blit_whole(background, s.canvas, clip, 0, 0, W, H);

    // Top bar and two cards: translucent fills over the picture.
    xg_area bar{0, 0, W, 40};
    xc_rectangle_draw(s.canvas, &clip, &bar, 0xA0101820u);
    xg_area card{20, 60, W / 2 - 10, H - 20};
    xc_rectangle_draw(s.canvas, &clip, &card, 0x90FFFFFFu);
    xg_area card2{W / 2 + 10, 60, W - 20, H - 20};
    xc_rectangle_draw(s.canvas, &clip, &card2, 0x60000000u);

    const char *icons[] = {"icon-disc.png", "icon-ring.png", "icon-star.png", "icon-tile.png"};
    std::vector<xc_image *> loaded;
    for (int i = 0; i < 4; ++i) {
        xc_image *icon = load(cat({assets, "/", icons[i]}), problem);
        if (!icon) return false;
        s.owned.push_back(icon);
        loaded.push_back(icon);
        blit_whole(icon, s.canvas, clip, 40 + i * 64, 76, 48, 48);
    }
    // The same icon tinted and enlarged, and recoloured to grey.
    blit_whole(loaded[2], s.canvas, clip, 40, 140, 96, 96, 0xFFFF6090u);
    const float grey[16] = {0.299f, 0.299f, 0.299f, 0, 0.587f, 0.587f, 0.587f, 0,
                            0.114f, 0.114f, 0.114f, 0, 0, 0, 0, 0};
    const int32_t low[3] = {0, 0, 0}, high[3] = {255, 255, 255};
    xc_image *recoloured = xc_image_new_from_color_transformed_image(loaded[0], grey, low, high);
    if (recoloured) {
        // The transform copies alpha into an opaque result; this icon's
        // alpha is real, so let the blit blend with it.
        recoloured->has_alpha = 1;
        recoloured->format = 0;
        s.owned.push_back(recoloured);
        blit_whole(recoloured, s.canvas, clip, 150, 164, 48, 48);
    }

    xc_image *badge = load(cat({assets, "/badge.bmp"}), problem);
    if (!badge) return false;
    s.owned.push_back(badge);
    blit_whole(badge, s.canvas, clip, W / 2 + 30, 76, badge->width, badge->height);

    xc_image *thumb = xc_image_fit_size(background, 120, 120, "matte");
    s.owned.push_back(thumb);
    blit_whole(thumb, s.canvas, clip, W / 2 + 170, 76, thumb->width, thumb->height);

    // A chart: grid lines, a polyline and a filled polygon under it.
    const int32_t cx = W / 2 + 30, cy = H - 150, cw = W / 2 - 70, ch = 100;
    for (int32_t i = 0; i <= 4; ++i)
        xc_line_draw(s.canvas, &clip, cx, cy + i * ch / 4, cx + cw, cy + i * ch / 4, 0x60FFFFFFu);
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
    xc_polygon_draw(s.canvas, &clip, 0, 0, polygon, 0x8040C0FFu);
    xg_list_free(polygon);
    for (size_t i = 1; i < points.size(); ++i)
        xc_line_draw(s.canvas, &clip, points[i - 1].x, points[i - 1].y, points[i].x, points[i].y,
                     0xFFFFFFFFu);

    draw_text(s, s.title, 14, 28, "fbcompose demo", 0xFFFFFFFFu);
    draw_text(s, s.body, 40, 270, "Living room  21.5 \xC2\xB0" "C", 0xFF202020u);
    draw_text(s, s.body, 40, 300, "Humidity 48 %  \xE2\x80\xA2  Air good", 0xFF202020u);
    // The main font has no CJK; these come from the fallback font.
    draw_text(s, s.body, 40, 330, "\xE4\xBB\x8A\xE6\x97\xA5\xE3\x81\xAF\xE6\x99\xB4\xE3\x82\x8C "
                                  "(sunny today)", 0xFF202020u);
    return true;
}

// The parts that change per frame: the GIF spinner and a frame counter.
void compose_frame(scene &s, int32_t frame, xc_dm *damage) {
    const xg_area clip{0, 0, s.canvas->width, s.canvas->height};
    for (const xg_rect &r : {s.spinner_rect, s.counter_rect}) {
        xc_image_blit(s.base, s.canvas, &clip, r.x, r.y, r.w, r.h, r.x, r.y, r.w, r.h, 0,
                      0xFFFFFFFFu);
        xc_dm_add_area(damage, &r);
    }
    if (frame > 0) {
        int32_t delay, x, y, w, h;
        xc_image_next_frame(s.spinner, &delay, &x, &y, &w, &h);
    }
    blit_whole(s.spinner, s.canvas, clip, s.spinner_rect.x, s.spinner_rect.y, s.spinner->width,
               s.spinner->height);
    char counter[32];
    std::snprintf(counter, sizeof counter, "frame %d", frame);
    draw_text(s, s.title, s.counter_rect.x, s.counter_rect.y + 24, counter, 0xFFFFD040u);
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

std::vector<xg_rect> take_rects(xc_dm *damage) {
    std::vector<xg_rect> rects;
    xg_list *list = xc_dm_get_rects(damage);
    for (xg_list_item *item = xg_list_first(list); item; item = item->next)
        rects.push_back(*static_cast<xg_rect *>(item->data));
    xg_list_free_with_data(list);
    return rects;
}

}  // namespace

int run_demo(int argc, char **argv) {
    args a(argc, argv);
    if (a.wants_help()) return help();
    options o;
    if (int bad = parse(a, o)) return bad;

    std::string problem;
    panel screen;
    if (!panel::make(o.depth, o.rotation, o.width, o.height, screen, problem))
        return fail(kCommand, problem);
    const std::string assets = find_assets();
    if (assets.empty()) return fail(kCommand, "cannot find the demo's assets (set FBCOMPOSE_ASSETS)");
    namespace fs = std::filesystem;
    const fs::path parent = fs::path(o.preview).parent_path();
    const std::string out_dir = parent.empty() ? std::string(".") : parent.string();
    std::error_code error;
    fs::create_directories(out_dir, error);
    if (error) return fail(kCommand, cat({"cannot create folder '", out_dir, "'"}));

    if (xc_init() < 0) return fail(kCommand, "the font engine did not start");
    xc_set_image_cache_size(4 << 20);
    xc_font_set_cache(1 << 20);
    xc_font_set_fallback(kFallbackFont);

    scene s;
    s.title = xc_font_load(kMainFont, 14, 0, 0);
    s.body = xc_font_load(kMainFont, 11, 0, 0);
    if (!s.title || !s.body)
        std::fprintf(stderr, "fbcompose demo: no font at %s; drawing without text\n", kMainFont);
    s.canvas = xc_image_create(o.width, o.height);
    if (!s.canvas->data) return fail(kCommand, "no memory for the canvas");
    if (!compose_static(s, assets, out_dir, problem)) return fail(kCommand, problem);
    s.base = xc_image_new_from_data(o.width, o.height, s.canvas->data, 24, 1, 0);
    s.spinner = load(cat({assets, "/spinner.gif"}), problem);
    if (!s.spinner) return fail(kCommand, problem);
    s.spinner_rect = {o.width - 90, o.height - 80, 64, 64};
    s.counter_rect = {o.width - 140, 6, 130, 30};

    xc_dm *damage = xc_dm_new(o.width, o.height);
    const xg_rect everything{0, 0, o.width, o.height};
    for (int32_t frame = 0; frame < o.frames; ++frame) {
        const auto start = std::chrono::steady_clock::now();
        compose_frame(s, frame, damage);
        if (frame == 0) xc_dm_add_area(damage, &everything);
        const std::vector<xg_rect> rects = take_rects(damage);
        for (const xg_rect &r : rects) screen.update(s.canvas, r);
        const double ms = std::chrono::duration<double, std::milli>(
                              std::chrono::steady_clock::now() - start).count();
        std::printf("frame %d: %zu rect%s%s, %.2f ms\n", frame, rects.size(),
                    rects.size() == 1 ? "" : "s", describe(rects).c_str(), ms);
    }
    xc_dm_free(damage);

    const std::string raw = fs::path(o.preview).replace_extension(".raw").string();
    if (!screen.write_raw(raw)) return fail(kCommand, cat({"cannot write '", raw, "'"}));
    xc_image *preview = screen.preview();
    const int saved = xc_image_save(preview, o.preview.c_str(), nullptr, nullptr);
    xc_image_unref(preview);
    if (saved < 0) return fail(kCommand, cat({"cannot write '", o.preview, "'"}));
    std::printf("panel frame buffer: %s (%dx%d, %d bits per pixel as %s, %zu bytes)\n",
                raw.c_str(), screen.width(), screen.height(), o.depth,
                o.depth == 16 ? "RGB565 words" : o.depth == 18 ? "RGB666 in 32-bit words" : "32-bit words",
                screen.bytes());
    std::printf("preview picture:    %s\n", o.preview.c_str());
    return 0;
}

}  // namespace fbctool
