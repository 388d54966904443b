#include "fbcompose/version.h"

#define FBC_TEXT(x) #x
#define FBC_NUMBER_TEXT(x) FBC_TEXT(x)

extern "C" const char *xc_version(void) {
    return FBC_NUMBER_TEXT(FBCOMPOSE_VERSION_MAJOR) "." FBC_NUMBER_TEXT(
        FBCOMPOSE_VERSION_MINOR) "." FBC_NUMBER_TEXT(FBCOMPOSE_VERSION_PATCH);
}
