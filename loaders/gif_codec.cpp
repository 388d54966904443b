// GIF reading on giflib: the first frame composited on the logical screen,
// later frames decoded one at a time on demand and composited with their
// disposal methods (none, background, previous). Transparent pixels have
// alpha 0 (and so colour 0, premultiplied); the screen starts transparent,
// and disposal to background clears to transparent, as browsers do.
//
// The file's bytes are kept in memory while an animation plays, so no file
// handle stays open between frames; the decoder reads them through a
// bounds-checked input function.
#include <gif_lib.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "core/log.hpp"
#include "core/pixel_format.hpp"
#include "fbcompose/loader.h"
#include "loaders/codec_support.hpp"
#include "loaders/decode_limits.hpp"
#include "loaders/decoders.hpp"

namespace fbc {
namespace {

constexpr int kDisposeBackground = 2;
constexpr int kDisposePrevious = 3;
constexpr uint32_t kTransparent = 0;
// A 12-bit LZW code stands for at most 4096 pixels, so a file's bytes can
// fill at most about 2700 pixels each; a screen needing more than 4096 per
// byte is not a picture the file holds.
constexpr int64_t kScreenPixelsPerByte = 4096;

// What the graphic control extension before a frame says about it.
struct FrameControl {
    int disposal = 0;
    int delay_cs = 0;
    int transparent = -1;
};

FrameControl control_of(const GifByteType *ext) {
    FrameControl c;
    if (!ext || ext[0] < 4) return c;
    c.disposal = (ext[1] >> 2) & 7;
    c.delay_cs = ext[2] | ext[3] << 8;
    c.transparent = (ext[1] & 1) ? ext[4] : -1;
    return c;
}

// The decoder of one image and the screen state between its frames.
struct GifPlayer {
    std::vector<uint8_t> bytes;
    size_t read_at = 0;
    GifFileType *gif = nullptr;
    int frame = -1;  // index of the frame on screen
    bool stream_ended = false;
    int delay_ms = -1;
    // The frame on screen: its area and what its disposal needs.
    int disposal = 0;
    xg_area area{0, 0, 0, 0};
    std::vector<uint32_t> under;  // pixels it covered, for disposal to previous

    ~GifPlayer() { close(); }
    void close() {
        if (gif) DGifCloseFile(gif, nullptr);
        gif = nullptr;
    }
};

int read_bytes(GifFileType *gif, GifByteType *out, int length) {
    auto *player = static_cast<GifPlayer *>(gif->UserData);
    const size_t left = player->bytes.size() - player->read_at;
    const size_t n = length < 0                           ? 0
                     : static_cast<size_t>(length) < left ? static_cast<size_t>(length)
                                                          : left;
    if (n == 0) return 0;
    std::memcpy(out, player->bytes.data() + player->read_at, n);
    player->read_at += n;
    return static_cast<int>(n);
}

bool open_decoder(GifPlayer &player) {
    player.close();
    player.read_at = 0;
    player.gif = DGifOpen(&player, read_bytes, nullptr);
    player.frame = -1;
    player.stream_ended = false;
    player.disposal = 0;
    player.area = {0, 0, 0, 0};
    return player.gif != nullptr;
}

// Browsers play delays of 10 ms or less as 100 ms.
int delay_in_ms(int centiseconds) {
    const int ms = centiseconds * 10;
    return ms <= 10 ? 100 : ms;
}

xg_area clipped_frame_area(const GifFileType *gif) {
    const GifImageDesc &d = gif->Image;
    auto clamp = [](long v, long hi) { return static_cast<int32_t>(v < 0 ? 0 : v > hi ? hi : v); };
    return {clamp(d.Left, gif->SWidth), clamp(d.Top, gif->SHeight),
            clamp(long{d.Left} + d.Width, gif->SWidth),
            clamp(long{d.Top} + d.Height, gif->SHeight)};
}

uint32_t *screen_row(xc_image *image, int32_t y) {
    return reinterpret_cast<uint32_t *>(image->data + static_cast<size_t>(y) *
                                                          static_cast<size_t>(image->rowstride));
}

void fill_area(xc_image *image, const xg_area &a, uint32_t word) {
    for (int32_t y = a.y1; y < a.y2; ++y)
        for (int32_t x = a.x1; x < a.x2; ++x) screen_row(image, y)[x] = word;
}

void copy_area_out(xc_image *image, const xg_area &a, std::vector<uint32_t> &out) {
    out.clear();
    for (int32_t y = a.y1; y < a.y2; ++y)
        out.insert(out.end(), screen_row(image, y) + a.x1, screen_row(image, y) + a.x2);
}

void copy_area_in(xc_image *image, const xg_area &a, const std::vector<uint32_t> &in) {
    const size_t width = static_cast<size_t>(a.x2 - a.x1);
    for (int32_t y = a.y1; y < a.y2; ++y)
        std::memcpy(screen_row(image, y) + a.x1, in.data() + static_cast<size_t>(y - a.y1) * width,
                    width * 4);
}

// Undoes the frame on screen as its disposal method asks.
void dispose_current(GifPlayer &player, xc_image *image) {
    if (player.disposal == kDisposeBackground) fill_area(image, player.area, kTransparent);
    else if (player.disposal == kDisposePrevious && !player.under.empty())
        copy_area_in(image, player.area, player.under);
}

// One decoded row of colour indices onto the screen; the transparent index
// leaves the screen as it is, indices past the palette are black.
void composite_row(const GifPixelType *line, xc_image *image, const GifFileType *gif, int32_t y,
                   const ColorMapObject *map, int transparent) {
    if (y < 0 || y >= gif->SHeight) return;
    uint32_t *row = screen_row(image, y);
    const int32_t left = gif->Image.Left;
    for (int32_t x = 0; x < gif->Image.Width; ++x) {
        const int32_t sx = left + x;
        if (sx >= gif->SWidth) break;
        const int index = line[x];
        if (sx < 0 || index == transparent) continue;
        if (map && index < map->ColorCount) {
            const GifColorType &c = map->Colors[index];
            row[sx] = 0xFF000000u | uint32_t{c.Red} << 16 | uint32_t{c.Green} << 8 | c.Blue;
        } else {
            row[sx] = 0xFF000000u;
        }
    }
}

// Decodes the current frame's rows onto the screen, interlaced or not.
// Cut or corrupt data keeps the rows decoded so far and ends the stream.
void decode_frame_rows(GifPlayer &player, xc_image *image, const FrameControl &control) {
    GifFileType *gif = player.gif;
    const GifImageDesc &d = gif->Image;
    if (d.Width <= 0 || d.Height <= 0) {
        int code_size = 0;
        GifByteType *block = nullptr;
        if (DGifGetCode(gif, &code_size, &block) == GIF_ERROR) player.stream_ended = true;
        while (!player.stream_ended && block)
            if (DGifGetCodeNext(gif, &block) == GIF_ERROR) player.stream_ended = true;
        return;
    }
    const ColorMapObject *map = d.ColorMap ? d.ColorMap : gif->SColorMap;
    std::vector<GifPixelType> line(static_cast<size_t>(d.Width));
    static const int kPassStart[] = {0, 4, 2, 1}, kPassStep[] = {8, 8, 4, 2};
    const int passes = d.Interlace ? 4 : 1;
    for (int pass = 0; pass < passes; ++pass) {
        const int step = d.Interlace ? kPassStep[pass] : 1;
        for (int row = d.Interlace ? kPassStart[pass] : 0; row < d.Height; row += step) {
            if (DGifGetLine(gif, line.data(), d.Width) == GIF_ERROR) {
                player.stream_ended = true;
                return;
            }
            composite_row(line.data(), image, gif, d.Top + row, map, control.transparent);
        }
    }
}

xg_area union_of(const xg_area &a, const xg_area &b) {
    if (a.x2 <= a.x1 || a.y2 <= a.y1) return b;
    if (b.x2 <= b.x1 || b.y2 <= b.y1) return a;
    return {a.x1 < b.x1 ? a.x1 : b.x1, a.y1 < b.y1 ? a.y1 : b.y1, a.x2 > b.x2 ? a.x2 : b.x2,
            a.y2 > b.y2 ? a.y2 : b.y2};
}

// Reads records up to the next frame and composites it; false at the end
// of the stream. `changed` receives the screen area that changed.
bool composite_next_frame(GifPlayer &player, xc_image *image, xg_area *changed) {
    if (!player.gif || player.stream_ended) return false;
    GifFileType *gif = player.gif;
    FrameControl control;
    GifRecordType type;
    while (DGifGetRecordType(gif, &type) != GIF_ERROR) {
        if (type == EXTENSION_RECORD_TYPE) {
            int code = 0;
            GifByteType *ext = nullptr;
            if (DGifGetExtension(gif, &code, &ext) == GIF_ERROR) break;
            if (code == GRAPHICS_EXT_FUNC_CODE) control = control_of(ext);
            while (ext)
                if (DGifGetExtensionNext(gif, &ext) == GIF_ERROR)
                    return player.stream_ended = true, false;
            continue;
        }
        if (type != IMAGE_DESC_RECORD_TYPE || DGifGetImageDesc(gif) == GIF_ERROR) break;
        const xg_area area = clipped_frame_area(gif);
        *changed = union_of(
            player.disposal >= kDisposeBackground ? player.area : xg_area{0, 0, 0, 0}, area);
        dispose_current(player, image);
        if (control.disposal == kDisposePrevious) copy_area_out(image, area, player.under);
        decode_frame_rows(player, image, control);
        player.disposal = control.disposal;
        player.area = area;
        player.delay_ms = delay_in_ms(control.delay_cs);
        ++player.frame;
        return true;
    }
    player.stream_ended = true;
    return false;
}

// Walks the whole file without decoding pixels: frame count, and whether
// any screen pixel can end up transparent.
struct GifOutline {
    int frames = 0;
    bool transparency = false;
};

GifOutline outline_of(GifFileType *gif) {
    GifOutline o;
    FrameControl control;
    GifRecordType type;
    while (DGifGetRecordType(gif, &type) != GIF_ERROR && type != TERMINATE_RECORD_TYPE) {
        if (type == EXTENSION_RECORD_TYPE) {
            int code = 0;
            GifByteType *ext = nullptr;
            if (DGifGetExtension(gif, &code, &ext) == GIF_ERROR) break;
            if (code == GRAPHICS_EXT_FUNC_CODE) control = control_of(ext);
            while (ext && DGifGetExtensionNext(gif, &ext) != GIF_ERROR) {
            }
            if (ext) break;
            continue;
        }
        if (type != IMAGE_DESC_RECORD_TYPE || DGifGetImageDesc(gif) == GIF_ERROR) break;
        const GifImageDesc &d = gif->Image;
        const bool covers = d.Left <= 0 && d.Top <= 0 && long{d.Left} + d.Width >= gif->SWidth &&
                            long{d.Top} + d.Height >= gif->SHeight;
        o.transparency |= control.transparent >= 0 || control.disposal == kDisposeBackground ||
                          (o.frames == 0 && !covers);
        ++o.frames;
        control = FrameControl{};
        int code_size = 0;
        GifByteType *block = nullptr;
        if (DGifGetCode(gif, &code_size, &block) == GIF_ERROR) break;
        while (block && DGifGetCodeNext(gif, &block) != GIF_ERROR) {
        }
        if (block) break;
    }
    return o;
}

GifPlayer *player_of(xc_image *image) { return static_cast<GifPlayer *>(image->loader_data); }

// The file's bytes and an open decoder, or null with a diagnostic.
GifPlayer *open_player(const Source &source) {
    const char *filename = source.name;
    auto bytes = read_source(source);
    if (!bytes) {
        fbc::log_err("Couldn't load '%s' image:%s\n", filename, std::strerror(errno));
        return nullptr;
    }
    auto *player = new GifPlayer;
    player->bytes = std::move(*bytes);
    if (!open_decoder(*player)) {
        fbc::log_err("gif: file(%s) is not a GIF image\n", filename);
        delete player;
        return nullptr;
    }
    const GifFileType *gif = player->gif;
    if (gif->SWidth <= 0 || gif->SHeight <= 0 ||
        !image_size_fits("gif", filename, gif->SWidth, gif->SHeight)) {
        if (gif->SWidth <= 0 || gif->SHeight <= 0)
            fbc::log_err("gif: file(%s) has an empty screen\n", filename);
        delete player;
        return nullptr;
    }
    return player;
}

int read_info(xc_image *image, const Source &source) {
    const char *filename = source.name;
    GifPlayer *player = open_player(source);
    if (!player) return -1;
    const GifOutline outline = outline_of(player->gif);
    const int result = outline.frames > 0 ? 0 : -1;
    if (outline.frames == 0) fbc::log_err("gif: file(%s) holds no image\n", filename);
    image->width = player->gif->SWidth;
    image->height = player->gif->SHeight;
    image->is_ani = outline.frames > 1;
    image->has_alpha = outline.transparency;
    image->format = outline.transparency ? pixel_format::kRgba : pixel_format::kRgb;
    image->depth = 32;
    delete player;
    return result;
}

int gif_load_info(xc_image *image, const char *filename) {
    return read_info(image, Source{filename});
}

// Opens the source and composites its first frame into new pixels; the
// player, ready for the next frame, or null with nothing kept.
GifPlayer *load_first_frame(xc_image *image, const Source &source) {
    const char *filename = source.name;
    GifPlayer *player = open_player(source);
    if (!player) return nullptr;
    if (!image_fits_file("gif", filename, player->gif->SWidth, player->gif->SHeight,
                         static_cast<int64_t>(player->bytes.size()), kScreenPixelsPerByte)) {
        delete player;
        return nullptr;
    }
    image->width = player->gif->SWidth;
    image->height = player->gif->SHeight;
    image->rowstride = image->width * 4;
    xg_area changed;
    if (!xc_image_alloc_data(image)) {
        delete player;
        return nullptr;
    }
    std::memset(image->data, 0,
                static_cast<size_t>(image->rowstride) * static_cast<size_t>(image->height));
    if (!composite_next_frame(*player, image, &changed)) {
        fbc::log_err("gif: file(%s) holds no image\n", filename);
        std::free(image->data);
        image->data = nullptr;
        delete player;
        return nullptr;
    }
    return player;
}

int gif_load_data(xc_image *image, const char *filename) {
    GifPlayer *player = load_first_frame(image, Source{filename});
    if (!player) return -1;
    // A still image needs neither the decoder nor the file any more.
    if (!image->is_ani) {
        player->close();
        player->bytes = {};
    }
    delete player_of(image);
    image->loader_data = player;
    return 0;
}

// Advances to the next frame, or back to the first after the last one (an
// animation loops for as long as it is played); returns the frame's index.
int gif_next_frame(xc_image *image, int32_t *delay, int32_t *x, int32_t *y, int32_t *w,
                   int32_t *h) {
    if (!image->is_ani) return -1;
    if (!image->data && gif_load_data(image, image->filename) < 0) return -1;
    GifPlayer *player = player_of(image);
    xg_area changed{0, 0, image->width, image->height};
    if (player->frame < 0 || !composite_next_frame(*player, image, &changed)) {
        if (!open_decoder(*player)) return -1;
        std::memset(image->data, 0,
                    static_cast<size_t>(image->rowstride) * static_cast<size_t>(image->height));
        xg_area first;
        if (!composite_next_frame(*player, image, &first)) return -1;
        changed = {0, 0, image->width, image->height};
    }
    *delay = player->delay_ms;
    *x = changed.x1;
    *y = changed.y1;
    *w = changed.x2 - changed.x1;
    *h = changed.y2 - changed.y1;
    return player->frame;
}

int gif_get_delay(xc_image *image) {
    const GifPlayer *player = player_of(image);
    return player ? player->delay_ms : -1;
}

void gif_release(xc_image *image) {
    delete player_of(image);
    image->loader_data = nullptr;
}

const char *const kExtensions[] = {"gif", nullptr};

}  // namespace

int decode_gif(xc_image *image, const Source &source) {
    if (read_info(image, source) < 0) return -1;
    // Only the first frame is kept: the image is a still one.
    image->is_ani = 0;
    GifPlayer *player = load_first_frame(image, source);
    if (!player) return -1;
    delete player;
    return 0;
}

}  // namespace fbc

extern "C" {
xc_image_loader gif_loader = {fbc::kExtensions,
                              "gif",
                              fbc::gif_load_data,
                              fbc::gif_load_info,
                              nullptr,
                              fbc::gif_next_frame,
                              fbc::gif_get_delay,
                              fbc::gif_release,
                              nullptr};
}
