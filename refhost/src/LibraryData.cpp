// The callback tables handed to plug-ins, one static table per variant.

#include <array>

#include "Objects.h"
#include "refhost/refhost.h"

namespace refhost {
namespace {

constexpr int variantCount = (RH_TABLE_WITHOUT_IMAGES | RH_TABLE_WITHOUT_RAW_ARRAYS) + 1;

st_QuorbelLibraryData makeTable(int variant) {
    // The SDK's tables are non-const; plug-ins only read them.
    static st_QuorbelImageFunctions images = imageFunctions();
    static st_QuorbelRawArrayFunctions rawArrays = rawArrayFunctions();
    st_QuorbelLibraryData table{};
    table.version = QUORBEL_VERSION;
    table.releaseUTF8String = releaseString;
    table.message = postMessage;
    addTensorFunctions(table);
    table.imageFunctions = (variant & RH_TABLE_WITHOUT_IMAGES) ? nullptr : &images;
    table.rawArrayFunctions = (variant & RH_TABLE_WITHOUT_RAW_ARRAYS) ? nullptr : &rawArrays;
    return table;
}

}  // namespace

}  // namespace refhost

extern "C" QuorbelLibraryData rh_library_data(int variant) {
    static std::array<st_QuorbelLibraryData, refhost::variantCount> tables = [] {
        std::array<st_QuorbelLibraryData, refhost::variantCount> all{};
        for (int v = 0; v < refhost::variantCount; ++v) all[v] = refhost::makeTable(v);
        return all;
    }();
    if (variant < 0 || variant >= refhost::variantCount) return nullptr;
    return &tables[variant];
}
