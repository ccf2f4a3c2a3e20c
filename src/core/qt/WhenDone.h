#pragma once

#include <QFuture>
#include <QFutureWatcher>
#include <QObject>

#include <type_traits>
#include <utility>

namespace bv {

// Hands a worker's result to `done` on `context`'s thread, through its event loop, once the
// work has finished; nothing runs when `context` is gone by then, or when the work was
// cancelled or threw.
//
// Used instead of QFuture::then(context, …): with Qt 6.4 that continuation checks its guard
// on the worker thread and then posts to the context, so a room deleted at that moment on
// the main thread receives an event after its death. The watcher here is the context's
// child; its destructor unhooks it from the future under the future's own lock, so a
// finished signal either arrives while the context lives or never.
//
// Call from `context`'s thread.
template <typename T, typename Done>
void whenDone(QFuture<T> future, QObject* context, Done&& done) {
    auto* watcher = new QFutureWatcher<T>(context);
    QObject::connect(watcher, &QFutureWatcherBase::finished, context,
                     [watcher, done = std::forward<Done>(done)]() mutable {
                         watcher->deleteLater();
                         QFuture<T> finished = watcher->future();
                         if (finished.isCanceled()) return;
                         if constexpr (std::is_void_v<T>) {
                             done();
                         } else {
                             if (finished.resultCount() < 1) return;
                             done(finished.takeResult());
                         }
                     });
    watcher->setFuture(std::move(future));
}

} // namespace bv
