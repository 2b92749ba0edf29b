// What a failure escaping an export's worker becomes: the only thing the
// kernel sees of it.
#include <new>
#include <stdexcept>

#include <gtest/gtest.h>

#include "exports/DitherCatchTable.h"
#include "exports/ExportCatchTable.h"
#include "host/OstrelError.h"

namespace {

using GifExport::ExportCatchTable;
using GifExport::ExportError;
using OstrelUtils::DitherCatchTable;

template <typename Failure>
std::exception_ptr failure(Failure f) {
    return std::make_exception_ptr(f);
}

// The writers pass on an ExportError's status and give -10 for anything
// else; DitherImage tells a runtime error (-14) from the rest (-10), running
// out of memory or an index overrun included.
TEST(CatchTables, EachFailureGetsItsExportsCode) {
    const struct {
        std::exception_ptr failure;
        int writers, dither;
    } cases[] = {
        {failure(ExportError(-13)), -13, -14},
        {failure(ExportError(-9, "giflib")), -9, -14},
        {failure(std::bad_alloc()), -10, -10},
        {failure(std::out_of_range("x")), -10, -10},
        {failure(std::runtime_error("Invalid image type")), -10, -14},
        {failure(OstrelUtils::OstrelError(OstrelUtils::ImageTypeError)), -10, -14},
        {failure(42), -10, -10},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        EXPECT_EQ(ExportCatchTable::code(cases[i].failure), cases[i].writers) << "case " << i;
        EXPECT_EQ(DitherCatchTable::code(cases[i].failure), cases[i].dither) << "case " << i;
    }
}

}  // namespace
