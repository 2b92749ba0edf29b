#include "dither/FloydSteinberg.h"

namespace ColorUtilities {

#define TARVEX_INSTANTIATE_FLOYD_STEINBERG(T, N) template class FloydSteinberg<T, N>;
TARVEX_FOR_EACH_INSTANTIATION(TARVEX_INSTANTIATE_FLOYD_STEINBERG)
#undef TARVEX_INSTANTIATE_FLOYD_STEINBERG

}  // namespace ColorUtilities
