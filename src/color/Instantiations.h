#pragma once

// The twenty element type x channel combinations, for explicit instantiation:
// MACRO(T, N) with N the channel count minus one.
#define TARVEX_FOR_EACH_CHANNEL_COUNT(MACRO, T) MACRO(T, 0) MACRO(T, 1) MACRO(T, 2) MACRO(T, 3)

#define TARVEX_FOR_EACH_INSTANTIATION(MACRO)                \
    TARVEX_FOR_EACH_CHANNEL_COUNT(MACRO, signed char)       \
    TARVEX_FOR_EACH_CHANNEL_COUNT(MACRO, unsigned char)     \
    TARVEX_FOR_EACH_CHANNEL_COUNT(MACRO, unsigned short)    \
    TARVEX_FOR_EACH_CHANNEL_COUNT(MACRO, float)             \
    TARVEX_FOR_EACH_CHANNEL_COUNT(MACRO, double)
