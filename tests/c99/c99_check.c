/* A C99 caller of the library: composes a canvas from the public records
 * and functions and checks what came back. */
#include <fbcompose/fbcompose.h>

#include <stdio.h>
#include <string.h>

static int failures = 0;

#define CHECK(cond)                                                                  \
    do {                                                                             \
        if (!(cond)) {                                                               \
            fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond); \
            ++failures;                                                              \
        }                                                                            \
    } while (0)

static int ascending(const void *a, const void *b) {
    const xg_point *p = *(const xg_point *const *)a;
    const xg_point *q = *(const xg_point *const *)b;
    return (p->x > q->x) - (p->x < q->x);
}

int main(void) {
    xg_rect a = {0, 0, 10, 10}, b = {10, 0, 5, 5}, out = {0, 0, 0, 0};
    xg_area area = {0, 0, 10, 10}, clip = {5, 5, 20, 20};
    uint32_t color = 0x80FF0000u;
    xc_image *canvas;
    xg_point points[3] = {{3, 0}, {1, 0}, {2, 0}};
    xg_list *list = NULL;
    int i;
    char version[40];

    CHECK(xc_init() == 0);
    CHECK(xg_rect_is_cross(&a, &b) == 1);
    CHECK(xg_rect_intersect(&out, &a, &b) == 5 && out.w == 0);
    xg_area_intersect_area(&area, &clip);
    CHECK(area.x1 == 5 && area.x2 == 10);
    xg_color_premultiply(&color);
    CHECK(color == 0x807F0000u);

    canvas = xc_image_create(4, 3);
    CHECK(canvas != NULL && canvas->rowstride == 16 && canvas->depth == 24);
    CHECK(canvas->has_alpha == 0 && xc_image_has_alpha(canvas) == 0);
    CHECK((uint8_t *)xc_image_pointer(canvas, 1, 2) == canvas->data + 36);
    memset(canvas->data, 0, 48);
    CHECK(xc_image_ref(canvas) == canvas && canvas->ref == 2);
    xc_image_unref(canvas);
    xc_image_unref(canvas);

    xc_set_image_cache_size(4096);
    CHECK(xc_get_image_cache_size() == 4096);
    CHECK(xc_image_lookup_in_cache("nothing.png") == NULL);

    for (i = 0; i < 3; ++i) list = xg_list_append(list, &points[i]);
    CHECK(xg_list_count(list) == 3);
    list = xg_list_sort(list, ascending);
    CHECK(((xg_point *)xg_list_nth(list, 0))->x == 1);
    CHECK(xg_list_get_index(list, &points[0]) == 2);
    list = xg_list_free(list);
    CHECK(list == NULL);

    /* The loaded library reports the version the headers carry. */
    sprintf(version, "%d.%d.%d", FBCOMPOSE_VERSION_MAJOR, FBCOMPOSE_VERSION_MINOR,
            FBCOMPOSE_VERSION_PATCH);
    CHECK(strcmp(xc_version(), version) == 0);

    if (failures == 0) printf("c99 check: all passed\n");
    return failures == 0 ? 0 : 1;
}
