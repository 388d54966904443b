#include "image_io.hpp"

#include "cli.hpp"

namespace fbctool {

xc_image *load_image(const std::string &path, std::string &problem) {
    xc_image *image = xc_image_new_from_file(path.c_str());
    if (!image) {
        problem = cat({"cannot open '", path, "' as an image (unknown or damaged file)"});
        return nullptr;
    }
    if (xc_image_load_data(image) < 0 || !image->data) {
        xc_image_unref(image);
        problem = cat({"cannot decode the pixels of '", path, "'"});
        return nullptr;
    }
    return image;
}

xc_image *flatten(xc_image *image) {
    xc_image *canvas = xc_image_create(image->width, image->height);
    if (!canvas->data) return canvas;
    const xg_area clip{0, 0, image->width, image->height};
    xg_area all = clip;
    xc_rectangle_draw(canvas, &clip, &all, 0xFF000000u);
    xc_image_blit(image, canvas, &clip, 0, 0, image->width, image->height, 0, 0, image->width,
                  image->height, 0, 0xFFFFFFFFu);
    return canvas;
}

}  // namespace fbctool
