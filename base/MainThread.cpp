#include "base/MainThread.h"

#include <QCoreApplication>
#include <QMetaObject>

#include <memory>

#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace vocalith {
namespace {

/// What was done before an action was posted has happened before it runs. Qt's queue sees to that, with locks that the
/// thread sanitizer does not know.
void publish([[maybe_unused]] void* queue)
{
#if defined(__SANITIZE_THREAD__)
    __tsan_release(queue);
#endif
}

void receive([[maybe_unused]] void* queue)
{
#if defined(__SANITIZE_THREAD__)
    __tsan_acquire(queue);
#endif
}

/// Takes a share of its own, so that the action's count is touched after the action has run.
void run(std::shared_ptr<std::function<void()>> action)
{
    (*action)();
}

} // namespace

void postToMainThread(std::function<void()> action)
{
    auto* application = QCoreApplication::instance();
    if (!application)
        return;
    // Either thread may be the last to let go of what is posted. Qt counts that where the thread sanitizer does not see
    // it; a count of our own, touched last by both, shows it the order.
    const auto shared = std::make_shared<std::function<void()>>(std::move(action));
    const auto call = [shared] {
        receive(QCoreApplication::instance());
        run(shared);
    };
    publish(application);
    QMetaObject::invokeMethod(application, call, Qt::QueuedConnection);
}

} // namespace vocalith
