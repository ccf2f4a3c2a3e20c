// The hold-to-confirm control of the cleanup sheet: a full hold commits once, an early release
// drains, a drag away or a disabled control does nothing.
#include <gtest/gtest.h>

#include <QSignalSpy>

#include "screens/HoldToConfirm.h"

using namespace bv;

namespace {

void holdFor(HoldToConfirm& h, double seconds) {
    for (double t = 0; t < seconds - 1e-9; t += HoldToConfirm::kStep) h.advance(HoldToConfirm::kStep);
}

} // namespace

TEST(HoldToConfirm, ReleasingEarlyDrainsAndNothingHappens) {
    HoldToConfirm h;
    QSignalSpy confirmed(&h, &HoldToConfirm::confirmed);
    h.press(5, 5);
    holdFor(h, 1.0);
    EXPECT_NEAR(h.progress(), 1.0 / 1.8, 0.01);
    h.release();
    // Drains 2.5 times as fast: from 1.0/1.8 in 0.4 s.
    holdFor(h, 0.384);
    EXPECT_GT(h.progress(), 0.0);
    holdFor(h, 0.048);
    EXPECT_DOUBLE_EQ(h.progress(), 0.0);
    EXPECT_FALSE(h.looping());
    EXPECT_EQ(confirmed.count(), 0);
    EXPECT_FALSE(h.committed());
}

TEST(HoldToConfirm, AFullHoldCommitsOnceAndAStallGainsLittle) {
    HoldToConfirm h;
    QSignalSpy confirmed(&h, &HoldToConfirm::confirmed);
    h.press(0, 0);
    h.advance(1.0); // the window froze for a second
    EXPECT_NEAR(h.progress(), 0.064 / 1.8, 1e-12);
    holdFor(h, 1.8 - 0.064 + 0.016);
    EXPECT_TRUE(h.committed());
    EXPECT_DOUBLE_EQ(h.progress(), 1.0);
    EXPECT_FALSE(h.holding());
    EXPECT_EQ(confirmed.count(), 1);
    h.press(0, 0);
    holdFor(h, 2.0);
    EXPECT_EQ(confirmed.count(), 1) << "a committed control does not fire again";
}

TEST(HoldToConfirm, DraggingAwayCancelsAndDisabledIgnoresPresses) {
    HoldToConfirm h;
    h.press(100, 100);
    h.move(107, 107); // 9.9 points: still holding
    EXPECT_TRUE(h.holding());
    h.move(111, 100); // 11 points: as if released
    EXPECT_FALSE(h.holding());
    HoldToConfirm off;
    off.setProperty("disabled", true);
    off.press(0, 0);
    EXPECT_FALSE(off.holding());
    EXPECT_FALSE(off.looping());
}
