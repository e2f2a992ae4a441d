// What the kernels of packs include from outside: to be included before they are included within a namespace. The
// kernels, the elements and the vector helpers that they use are then compiled once for each processor, in a namespace
// of its own, so that the linker takes none of their inline functions for another processor.
#include "BoxSides.h"
#include "PackedInversion.h"
#include "PackedPolish.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#if defined(__SSE2__)
#    include <immintrin.h>
#endif
