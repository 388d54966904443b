// The panel converters on SSE2, four pixels per register: every x86-64 CPU
// has it, so these are the host's baseline.
#include "pixel/convert_x86.hpp"
