#include <fbcompose/fbcompose.h>

#include <stdio.h>

int main(void) {
    xc_image *canvas;
    int ok;
    xc_init();
    canvas = xc_image_create(16, 16);
    ok = canvas && canvas->rowstride == 64 && canvas->data;
    xc_image_unref(canvas);
    printf("consumer: %s\n", ok ? "linked and ran" : "FAILED");
    return ok ? 0 : 1;
}
