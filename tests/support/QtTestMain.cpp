#include <gtest/gtest.h>

#include <QGuiApplication>
#ifdef QT_WIDGETS_LIB
#include <QApplication>
#endif

#include "core/BrimvaleSettings.h"
#include "foundation/FileIO.h"
#include "platform/XdgPaths.h"
#include "support/TestEnvironment.h"

// Model and screen tests: a temporary home, then a real Qt application object so event
// loops, timers and QSignalSpy work. Tests spin the loop themselves where they wait.
int main(int argc, char** argv) {
    bv::test::TestEnvironment::install();
    // The windows open for a user past the first run; the first-run test clears this itself.
    bv::BrimvaleSettings settings;
    settings.didCompleteFirstRun = true;
    (void)bv::makeDirectories(bv::XdgPaths::appDataDir());
    (void)bv::writeFileAtomically(bv::XdgPaths::appDataDir() + "/settings.json", bv::encodeJson(settings.toJson()));
#ifdef QT_WIDGETS_LIB
    // Where the widgets library is linked, Qt's test helpers take qApp for a QApplication.
    QApplication app(argc, argv);
#else
    QGuiApplication app(argc, argv);
#endif
    ::testing::InitGoogleTest(&argc, argv);
    const int rc = RUN_ALL_TESTS();
    bv::test::removeTree(bv::test::TestEnvironment::root());
    return rc;
}
