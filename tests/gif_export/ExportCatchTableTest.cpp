// What each failure escaping a writer becomes.
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "exports/ExportCatchTable.h"
#include "host/OstrelError.h"

namespace GifExport {
namespace {

template <typename Failure>
int codeOf(Failure failure) {
    return ExportCatchTable::code(std::make_exception_ptr(failure));
}

TEST(ExportCatchTable, GivesTheExportErrorsCodeAndMinusTenForAnythingElse) {
    EXPECT_EQ(codeOf(ExportError(-13)), -13);
    EXPECT_EQ(codeOf(ExportError(-9, "giflib")), -9);
    EXPECT_EQ(codeOf(std::bad_alloc()), -10);
    EXPECT_EQ(codeOf(std::runtime_error("Invalid image type")), -10);
    EXPECT_EQ(codeOf(OstrelUtils::OstrelError(OstrelUtils::ImageTypeError)), -10);
    EXPECT_EQ(codeOf(42), -10);
}

}  // namespace
}  // namespace GifExport
