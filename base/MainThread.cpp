#include "base/MainThread.h"

#include <QCoreApplication>
#include <QEvent>

#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace vocalith {
namespace {

/// An action on its way through the application's event queue. Nobody handles the event: the action runs when the main
/// thread throws it away, so that the poster does not touch it once it is posted.
class PostedAction final : public QEvent {
public:
    explicit PostedAction(std::function<void()> action) : QEvent(QEvent::User), m_action(std::move(action))
    {
#if defined(__SANITIZE_THREAD__)
        __tsan_release(this); // Qt's queue has locks that the thread sanitizer does not know
#endif
    }
    PostedAction(const PostedAction&) = delete;
    PostedAction& operator=(const PostedAction&) = delete;
    ~PostedAction() override
    {
#if defined(__SANITIZE_THREAD__)
        __tsan_acquire(this);
#endif
        if (QCoreApplication::instance()) // else it was still in the queue when the application ended
            m_action();
    }

private:
    std::function<void()> m_action;
};

} // namespace

void postToMainThread(std::function<void()> action)
{
    if (auto* application = QCoreApplication::instance())
        QCoreApplication::postEvent(application, new PostedAction(std::move(action)));
}

} // namespace vocalith
