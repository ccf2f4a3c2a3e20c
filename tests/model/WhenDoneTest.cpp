#include <gtest/gtest.h>

#include <QFutureInterface>
#include <QObject>
#include <QtConcurrent/QtConcurrentRun>

#include <atomic>
#include <memory>
#include <optional>
#include <thread>

#include "core/qt/WhenDone.h"
#include "support/EventLoopWait.h"

using namespace bv;
using bv::test::spin;
using bv::test::spinUntil;

// A room deleted while its work is still running: the work ends on the worker after the room
// is gone and nothing reaches it. Repeated with the deletion landing before, during and after
// the worker's finish, which is where a context check on the worker thread used to race.
TEST(WhenDone, ResultArrivesOnlyWhileTheContextLivesAndNeverBeforeTheEventLoop) {
    // Finished before anyone waits: still delivered through the event loop, not inline.
    {
        QObject room;
        std::optional<int> got;
        whenDone(QtFuture::makeReadyFuture(7), &room, [&](int v) { got = v; });
        EXPECT_FALSE(got);
        ASSERT_TRUE(spinUntil([&] { return got.has_value(); }));
        EXPECT_EQ(*got, 7);
    }
    // Cancelled work hands nothing over.
    {
        QObject room;
        QFutureInterface<int> promise;
        promise.reportStarted();
        bool called = false;
        whenDone(promise.future(), &room, [&](int) { called = true; });
        promise.reportCanceled();
        promise.reportFinished();
        spin(50);
        EXPECT_FALSE(called);
    }
    auto calls = std::make_shared<std::atomic<int>>(0);
    for (int round = 0; round < 200; ++round) {
        auto room = std::make_unique<QObject>();
        std::atomic<bool> release{false};
        auto work = QtConcurrent::run([&release, round] {
            while (!release.load()) std::this_thread::yield();
            return round;
        });
        whenDone(work, room.get(), [calls](int) { ++*calls; });
        release = true;
        if (round % 2) std::this_thread::yield();
        room.reset();
        work.waitForFinished();
        spin(1);
    }
    spin(50);
    EXPECT_EQ(calls->load(), 0);
}
