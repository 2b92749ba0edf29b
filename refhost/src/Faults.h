// One-shot faults that a caller arms to reach a plug-in's failure paths.
#pragma once

namespace refhost {

enum class Creation { Image, RawArray, Tensor };

// The armed code for that kind of creation, disarming it; 0 when none.
int takeCreationFault(Creation kind);
// The armed write budget for the next plug-in link, disarming it; -1 when none.
int takeLinkFault();

}  // namespace refhost
