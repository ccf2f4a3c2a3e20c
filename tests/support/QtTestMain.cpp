#include <gtest/gtest.h>

#include <QGuiApplication>

#include "support/TestEnvironment.h"

// Model and screen tests: a temporary home, then a real Qt application object so event
// loops, timers and QSignalSpy work. Tests spin the loop themselves where they wait.
int main(int argc, char** argv) {
    bv::test::TestEnvironment::install();
    QGuiApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    const int rc = RUN_ALL_TESTS();
    bv::test::removeTree(bv::test::TestEnvironment::root());
    return rc;
}
