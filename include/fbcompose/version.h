/* The version of the headers, and of the library actually loaded.
 *
 * The CMake project takes its version from the three macros below: they are
 * the one place where it is written. */
#ifndef FBCOMPOSE_VERSION_H
#define FBCOMPOSE_VERSION_H

#include "export.h"

#define FBCOMPOSE_VERSION_MAJOR 0
#define FBCOMPOSE_VERSION_MINOR 1
#define FBCOMPOSE_VERSION_PATCH 0

FBC_BEGIN_DECLS

/* "MAJOR.MINOR.PATCH" of the library the program runs with, which may be
 * newer than the headers it was built against (same MAJOR: compatible).
 * A constant string owned by the library. */
FBC_API const char *xc_version(void);

FBC_END_DECLS

#endif
