#include "Faults.h"

#include <array>
#include <utility>

#include "refhost/refhost.h"

namespace refhost {
namespace {

struct Armed {
    std::array<int, 3> creationCodes{};
    int linkWrites = -1;
};

Armed &armed() {
    static Armed faults;
    return faults;
}

}  // namespace

int takeCreationFault(Creation kind) {
    return std::exchange(armed().creationCodes[static_cast<int>(kind)], 0);
}

int takeLinkFault() { return std::exchange(armed().linkWrites, -1); }

}  // namespace refhost

using refhost::Creation;

extern "C" {

void rh_fail_next_image_creation(int code) {
    refhost::armed().creationCodes[static_cast<int>(Creation::Image)] = code;
}

void rh_fail_next_raw_array_creation(int code) {
    refhost::armed().creationCodes[static_cast<int>(Creation::RawArray)] = code;
}

void rh_fail_next_tensor_creation(int code) {
    refhost::armed().creationCodes[static_cast<int>(Creation::Tensor)] = code;
}

void rh_fail_link_after(int puts) { refhost::armed().linkWrites = puts < 0 ? -1 : puts; }

void rh_clear_faults(void) { refhost::armed() = {}; }

}  // extern "C"
