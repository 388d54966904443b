// The panel converters on AVX2, eight pixels per register. Built with
// -mavx2, this file's code runs only where cpu_has(Isa::kAvx2).
#include "pixel/convert_x86.hpp"
