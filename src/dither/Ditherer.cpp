#include "dither/Ditherer.h"

namespace ColorUtilities {

#define TARVEX_INSTANTIATE_DITHERER(T, N) template class Ditherer<T, N>;
TARVEX_FOR_EACH_INSTANTIATION(TARVEX_INSTANTIATE_DITHERER)
#undef TARVEX_INSTANTIATE_DITHERER

}  // namespace ColorUtilities
