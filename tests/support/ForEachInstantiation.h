#pragma once

namespace tarvex_test {

// check.template operator()<T, N>() for the four channel counts (N = 0..3)
// of each given element type.
template <typename... Types, class Check>
void forEachChannelCount(Check &&check) {
    const auto channels = [&]<typename T>() {
        check.template operator()<T, 0>();
        check.template operator()<T, 1>();
        check.template operator()<T, 2>();
        check.template operator()<T, 3>();
    };
    (channels.template operator()<Types>(), ...);
}

// The twenty instantiations of the colour code.
template <class Check>
void forEachInstantiation(Check &&check) {
    forEachChannelCount<signed char, unsigned char, unsigned short, float, double>(check);
}

}  // namespace tarvex_test
