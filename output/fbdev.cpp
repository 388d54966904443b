// A Linux frame-buffer device as a panel: its geometry and pixel layout
// come from the driver, its memory is mapped, and from there on it is the
// same panel as one in caller memory.
#include <fcntl.h>
#include <linux/fb.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "core/log.hpp"
#include "output/panel.hpp"

namespace fbc {
namespace {

constexpr const char *kCaller = "xc_panel_open_fbdev";

bool field_is(const fb_bitfield &field, uint32_t offset, uint32_t length) {
    return field.offset == offset && field.length == length && field.msb_right == 0;
}

// The converter depth that writes this layout, or 0.
int depth_of(const fb_var_screeninfo &var) {
    if (var.bits_per_pixel == 16 && field_is(var.red, 11, 5) && field_is(var.green, 5, 6) &&
        field_is(var.blue, 0, 5))
        return 16;
    if (var.bits_per_pixel != 32) return 0;
    if (field_is(var.red, 16, 8) && field_is(var.green, 8, 8) && field_is(var.blue, 0, 8))
        return 32;
    if (field_is(var.red, 12, 6) && field_is(var.green, 6, 6) && field_is(var.blue, 0, 6))
        return 18;
    return 0;
}

// Why the device cannot be driven, or null.
const char *refusal(const fb_fix_screeninfo &fix, const fb_var_screeninfo &var, int depth) {
    if (fix.type != FB_TYPE_PACKED_PIXELS) return "its pixels are not packed";
    if (fix.visual != FB_VISUAL_TRUECOLOR && fix.visual != FB_VISUAL_DIRECTCOLOR)
        return "it is not a true-colour display";
    if (depth == 0) return "its pixel layout is not RGB565, RGB666 or 32-bit RGB";
    if (var.xres < 1 || var.yres < 1 || var.xres > INT32_MAX || var.yres > INT32_MAX ||
        fix.line_length > INT32_MAX)
        return "it reports an unusable size";
    const uint64_t bytes = depth == 16 ? 2 : 4;
    const uint64_t first = uint64_t{var.yoffset} * fix.line_length + uint64_t{var.xoffset} * bytes;
    const uint64_t end =
        first + uint64_t{var.yres - 1} * fix.line_length + uint64_t{var.xres} * bytes;
    if (fix.line_length < var.xres * bytes || end > fix.smem_len)
        return "its memory is smaller than its visible rows need";
    return nullptr;
}

xc_panel *fail(const char *path, const char *why, int device) {
    log_err("%s: cannot drive '%s': %s\n", kCaller, path, why);
    if (device >= 0) close(device);
    return nullptr;
}

}  // namespace
}  // namespace fbc

extern "C" xc_panel *xc_panel_open_fbdev(const char *path, int rotation) {
    using namespace fbc;
    if (!path) return fail("(null)", "no path", -1);
    const int device = open(path, O_RDWR | O_CLOEXEC);
    if (device < 0) return fail(path, std::strerror(errno), -1);
    fb_fix_screeninfo fix{};
    fb_var_screeninfo var{};
    if (ioctl(device, FBIOGET_FSCREENINFO, &fix) != 0 ||
        ioctl(device, FBIOGET_VSCREENINFO, &var) != 0)
        return fail(path, "not a frame-buffer device", device);
    const int depth = depth_of(var);
    if (const char *why = refusal(fix, var, depth)) return fail(path, why, device);
    void *mapping = mmap(nullptr, fix.smem_len, PROT_READ | PROT_WRITE, MAP_SHARED, device, 0);
    if (mapping == MAP_FAILED) return fail(path, std::strerror(errno), device);
    const uint32_t bytes = depth == 16 ? 2 : 4;
    auto *visible = static_cast<uint8_t *>(mapping) + size_t{var.yoffset} * fix.line_length +
                    size_t{var.xoffset} * bytes;
    xc_panel *panel =
        make_panel(visible, static_cast<int32_t>(var.xres), static_cast<int32_t>(var.yres),
                   static_cast<int32_t>(fix.line_length), depth, rotation, kCaller);
    if (!panel) {
        munmap(mapping, fix.smem_len);
        close(device);
        return nullptr;
    }
    panel->device = device;
    panel->mapping = mapping;
    panel->mapping_length = fix.smem_len;
    return panel;
}
