#include "host/LibraryData.h"

#include <cstdint>

#include "host/MArray.h"

namespace OstrelUtils {

namespace {
QuorbelLibraryData currentLibraryData = nullptr;

template <typename... T>
void setTablesOf(QuorbelLibraryData data) {
    (MArray<T>::setTables(data), ...);
}
}  // namespace

QuorbelLibraryData libraryData() { return currentLibraryData; }

void setLibraryData(QuorbelLibraryData data) {
    currentLibraryData = data;
    setTablesOf<signed char, unsigned char, unsigned short, float, double, unsigned int,
                std::uint64_t>(data);
}

}  // namespace OstrelUtils
