#include <gtest/gtest.h>

#include "support/TestEnvironment.h"

// Plain (Qt-free) test binaries: a temporary home for the whole run, then GoogleTest.
int main(int argc, char** argv) {
    bv::test::TestEnvironment::install();
    ::testing::InitGoogleTest(&argc, argv);
    const int rc = RUN_ALL_TESTS();
    bv::test::removeTree(bv::test::TestEnvironment::root());
    return rc;
}
