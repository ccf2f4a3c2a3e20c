#pragma once
#include <QCoreApplication>
#include <QElapsedTimer>

namespace bv::test {

// Runs the event loop until `done()` holds or `ms` milliseconds pass; the answer is `done()`.
// Tests that wait on the model's background work (scans, runs, surveys) use this, never sleep.
template <class Pred>
bool spinUntil(Pred done, int ms = 10000) {
    QElapsedTimer t;
    t.start();
    while (!done() && t.elapsed() < ms) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return done();
}

// Runs the event loop for `ms` milliseconds, for a window to settle before a screenshot.
inline void spin(int ms) {
    spinUntil([] { return false; }, ms);
}

} // namespace bv::test
