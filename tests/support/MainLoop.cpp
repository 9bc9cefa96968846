#include "tests/support/MainLoop.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace vocalith::test {

bool runUntil(const std::function<bool()>& condition, std::chrono::seconds limit)
{
    const QDeadlineTimer deadline(limit);
    QTimer wake; // so that the loop looks at the condition again although nothing happens
    wake.start(std::chrono::milliseconds(5));
    while (!condition()) {
        if (deadline.hasExpired()) {
            ADD_FAILURE() << "what the test waits for did not happen";
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void drainMainThread()
{
    // Each pass handles what the one before it posted; a chain in the code under test is never this long.
    for (int pass = 0; pass < 20; ++pass)
        QCoreApplication::processEvents();
}

} // namespace vocalith::test
