// The scalers' row passes on SSE2, the host's baseline.
#include "pixel/scale_x86.hpp"
