#include <gtest/gtest.h>

#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include "core/qt/Messages.h"
#include "core/qt/WatchRequests.h"
#include "model/AppModel.h"
#include "core/qt/SingleInstance.h"
#include "platform/XdgPaths.h"
#include "support/TestEnvironment.h"

using namespace bv;

namespace {

// The real program, started the way a desktop starts it for a link or a folder, beside
// this test process acting as the running instance (same user runtime folder).
struct SecondStart {
    int exitCode = -1;
    QString errors;
};

SecondStart startSecondInstance(const QStringList& arguments) {
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("QT_QPA_PLATFORM", "offscreen");
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(BV_APP_PATH), arguments);
    // This thread's event loop must turn so the running instance can answer.
    const bool ended = QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 15000);
    if (!ended) {
        process.kill();
        process.waitForFinished(2000);
        return {};
    }
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardError())};
}

} // namespace

TEST(SecondInstance, HandsAScanLinkToTheRunningOneAndExits) {
    test::removeTree(XdgPaths::appDataDir());
    AppModel model(true);
    model.start();
    SingleInstance instance;
    ASSERT_TRUE(instance.listen()) << instance.socketName().toStdString();
    QObject::connect(&instance, &SingleInstance::argumentsReceived, &model, &AppModel::handleInstanceArguments);
    QSignalSpy pass(&model, &AppModel::linkPassStarted);
    QSignalSpy raised(&model, &AppModel::raiseWindowRequested);

    const SecondStart scan = startSecondInstance({"brimvale://scan?need=12&source=wardlet"});
    EXPECT_EQ(scan.exitCode, 0) << scan.errors.toStdString();
    ASSERT_TRUE(QTest::qWaitFor([&] { return pass.count() == 1; }, 3000)) << "the first instance ran the pass";
    EXPECT_EQ(model.messages()->bannerText().toStdString(),
              "Wardlet noticed your Mac needs about 12 GB more free space so it can use swap without freezing. "
              "Here's what can be cleared safely.");
    EXPECT_GE(raised.count(), 1);

    // The file manager's folder action: a file is refused in the window, where the user is
    // looking; a folder reaches the running instance.
    const std::string dir = test::TestEnvironment::freshFolder("project to watch");
    test::writeFile(dir + "/Cargo.toml", "[package]\n");
    const SecondStart file = startSecondInstance({"--watch-folder", QString::fromStdString(dir + "/Cargo.toml")});
    EXPECT_EQ(file.exitCode, 0) << file.errors.toStdString();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !model.messages()->errorText().isEmpty(); }, 3000));
    EXPECT_EQ(model.messages()->errorText(), "Choose a folder to watch.");
    EXPECT_TRUE(model.watchRequests()->pendingPath().isEmpty());

    const SecondStart folder = startSecondInstance({"--watch-folder", QString::fromStdString(dir)});
    EXPECT_EQ(folder.exitCode, 0) << folder.errors.toStdString();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !model.watchRequests()->pendingPath().isEmpty(); }, 3000));
    EXPECT_EQ(model.watchRequests()->pendingPath().toStdString(), dir);
}
