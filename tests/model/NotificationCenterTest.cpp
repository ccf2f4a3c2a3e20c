#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

#include "NotificationTestServer.h"
#include "PrivateSessionBus.h"
#include "core/qt/NotificationCenter.h"
#include "core/qt/NotificationRouter.h"

using namespace bv;
using bv::test::NotificationTestServer;

namespace {

// Each test gets its own dbus-daemon, the server on one connection and the program's
// centre on another, so every message really crosses the bus.
class NotificationBusTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!bus.isUp()) GTEST_SKIP() << "dbus-run-session could not start a session bus";
        server = std::make_unique<NotificationTestServer>(bus.connect("server"));
        center = std::make_unique<NotificationCenter>(bus.connect("client"), router);
    }

    bool settle(QSignalSpy& spy, int count) { return QTest::qWaitFor([&] { return spy.count() >= count; }, 5000); }

    test::PrivateSessionBus bus;
    NotificationRouter router;
    std::unique_ptr<NotificationTestServer> server;
    std::unique_ptr<NotificationCenter> center;
};

} // namespace

TEST_F(NotificationBusTest, ANewLowSpaceAlertReplacesTheOneStillShowing) {
    ASSERT_TRUE(server->start());
    QSignalSpy settled(center.get(), &NotificationCenter::postSettled);

    center->postNotification("Auto-Sort", "Sorted 3 files. Details are in History.");
    center->postLowSpaceAlert("First");
    center->postLowSpaceAlert("Second, sent before the first was answered");
    center->postLowSpaceAlert("Third, replacing the second while it waits");
    ASSERT_TRUE(settle(settled, 3));
    QTest::qWait(50);
    center->postLowSpaceAlert("Fourth, much later");
    ASSERT_TRUE(settle(settled, 4));

    const auto& got = server->received();
    ASSERT_EQ(got.size(), 4u) << "the waiting second alert is superseded by the third";
    const auto& plain = got[0];
    EXPECT_EQ(plain.summary, "Auto-Sort");
    EXPECT_EQ(plain.replacesId, 0u);
    EXPECT_TRUE(plain.actions.isEmpty());
    EXPECT_EQ(plain.hints.value("urgency").value<uchar>(), 0) << "plain notifications are passive";

    const auto& first = got[1];
    EXPECT_EQ(first.summary, "Brimvale");
    EXPECT_EQ(first.body, "First");
    EXPECT_EQ(first.replacesId, 0u);
    EXPECT_EQ(first.actions, (QStringList{"default", "", "review-clean", "Review & Clean"}));
    EXPECT_EQ(first.hints.value("urgency").value<uchar>(), 1);
    EXPECT_EQ(got[2].body, "Third, replacing the second while it waits");
    EXPECT_EQ(got[2].replacesId, first.assignedId);
    EXPECT_EQ(got[3].replacesId, first.assignedId);
    EXPECT_EQ(center->lowSpaceAlertId(), first.assignedId);

    // Once the user closes it, the next alert is a new one.
    server->close(first.assignedId);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !center->lowSpaceAlertId(); }, 5000));
    center->postLowSpaceAlert("Fifth");
    ASSERT_TRUE(settle(settled, 5));
    EXPECT_EQ(server->received().back().replacesId, 0u);
}

TEST_F(NotificationBusTest, ReviewActionsAndLowSpaceClicksOpenThePreviewNothingElseDoes) {
    ASSERT_TRUE(server->start());
    QSignalSpy settled(center.get(), &NotificationCenter::postSettled);
    center->postLowSpaceAlert("Low on space");
    center->postNotification("5 GB back with Brimvale", "6 GB freed across 2 cleanups.");
    ASSERT_TRUE(settle(settled, 2));
    const uint lowSpace = server->received()[0].assignedId;
    const uint plain = server->received()[1].assignedId;

    struct Case {
        uint id;
        const char* key;
        bool opens;
        const char* why;
    };
    const Case cases[] = {
        {lowSpace, "review-clean", true, "the Review & Clean button"},
        {lowSpace, "default", true, "a click on the low-space alert"},
        {lowSpace, "preview-cleanup", true, "the older action name"},
        {plain, "default", false, "a click on a milestone notification"},
        {lowSpace, "dismiss", false, "an action we never offered"},
        {9999, "review-clean", false, "another program's notification"},
    };
    QSignalSpy opened(&router, &NotificationRouter::brimvalePreviewCleanup);
    for (const auto& c : cases) {
        opened.clear();
        server->invokeAction(c.id, c.key);
        // A marker action afterwards proves the first signal has been delivered either way.
        server->invokeAction(lowSpace, "review-clean");
        ASSERT_TRUE(QTest::qWaitFor([&] { return opened.count() >= (c.opens ? 2 : 1); }, 5000)) << c.why;
        QTest::qWait(20);
        EXPECT_EQ(opened.count(), c.opens ? 2 : 1) << c.why;
    }
}

TEST_F(NotificationBusTest, SilentWithoutAServerOrWithARefusingOne) {
    // Nobody owns the name: the bus answers with an error, and nothing else happens.
    QSignalSpy settled(center.get(), &NotificationCenter::postSettled);
    QSignalSpy opened(&router, &NotificationRouter::brimvalePreviewCleanup);
    center->postLowSpaceAlert("Low on space");
    center->postNotification("Auto-Sort", "Sorted 1 file.");
    ASSERT_TRUE(settle(settled, 2));
    EXPECT_FALSE(settled[0][0].toBool());
    EXPECT_FALSE(settled[1][0].toBool());
    EXPECT_FALSE(center->lowSpaceAlertId());

    server->setRefusing(true);
    ASSERT_TRUE(server->start());
    center->postLowSpaceAlert("Low on space again");
    ASSERT_TRUE(settle(settled, 3));
    EXPECT_FALSE(settled[2][0].toBool());
    EXPECT_TRUE(server->received().empty());
    EXPECT_EQ(opened.count(), 0);
}

TEST(NotificationCenter, SilentWithNoBusAtAll) {
    NotificationRouter router;
    NotificationCenter center(QDBusConnection::connectToBus(QStringLiteral("unix:path=/nonexistent/bus"), "nobus"),
                              router);
    QSignalSpy settled(&center, &NotificationCenter::postSettled);
    center.postLowSpaceAlert("Low on space");
    center.postNotification("a", "b");
    EXPECT_EQ(settled.count(), 2);
    EXPECT_FALSE(center.lowSpaceAlertId());
}
