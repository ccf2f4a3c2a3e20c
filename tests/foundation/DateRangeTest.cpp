#include <gtest/gtest.h>

#include "foundation/Dates.h"

using namespace bv;

// A date beyond what a time point holds must be refused, not wrapped into another date
// that a record would then write back.
TEST(Dates, RefusesYearsATimePointCannotHold) {
    for (const char* bad : {"1013-01-02T03:04:05Z", "0001-01-01T00:00:00Z", "9999-12-31T23:59:59Z", "1677-12-31T23:59:59Z",
                            "2262-01-01T00:00:00Z"})
        EXPECT_FALSE(parseIsoDate(bad)) << bad;
    for (const char* good : {"1678-01-01T00:00:00Z", "2261-12-31T23:59:59Z", "1969-12-31T23:59:59Z"}) {
        const auto t = parseIsoDate(good);
        ASSERT_TRUE(t) << good;
        EXPECT_EQ(isoDateText(*t), good);
    }
}
