#pragma once

#include <functional>

namespace vocalith {

/// Runs `action` on the main thread, from its event loop and never before this call has returned. Any thread may call
/// it. Actions of one thread run in the order of the calls. Without a QCoreApplication there is no main thread any
/// more, and the action is dropped.
void postToMainThread(std::function<void()> action);

} // namespace vocalith
