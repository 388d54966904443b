// The span primitives on AVX2, eight pixels per register. Built with
// -mavx2, this file's code runs only where cpu_has(Isa::kAvx2).
#include "pixel/spans_x86.hpp"
