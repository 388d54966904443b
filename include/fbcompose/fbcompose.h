/* fbcompose: screen composition for embedded Linux panels.
 * The umbrella header; each subsystem header can also be included alone. */
#ifndef FBCOMPOSE_FBCOMPOSE_H
#define FBCOMPOSE_FBCOMPOSE_H

#include "version.h"
#include "image.h"
#include "list.h"
#include "log.h"
#include "pixel.h"
#include "loader.h"
#include "transform.h"
#include "draw.h"
#include "panel.h"
#include "text.h"

#endif
