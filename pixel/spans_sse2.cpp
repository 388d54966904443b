// The span primitives on SSE2, four pixels per register: every x86-64 CPU
// has it, so these are the host's baseline.
#include "pixel/spans_x86.hpp"
