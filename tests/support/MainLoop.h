#pragma once

#include "base/Task.h"
#include "base/TaskScope.h"

#include <chrono>
#include <functional>
#include <optional>
#include <utility>

namespace vocalith::test {

/// Runs the main thread's event loop until `condition` holds, but at most until `limit`: then the test fails. Yields
/// whether it held.
bool runUntil(const std::function<bool()>& condition, std::chrono::seconds limit = std::chrono::seconds(60));

/// Handles what is due on the main thread now, also what that makes due.
void drainMainThread();

template <class T>
Task<void> storeResult(Task<T> task, std::optional<T>& result)
{
    auto value = co_await task;
    result.emplace(std::move(value));
}

/// Runs a task to its end from a test and yields its value.
template <class T>
T await(Task<T> task)
{
    std::optional<T> result;
    TaskScope scope;
    scope.start(storeResult(std::move(task), result));
    runUntil([&] { return scope.isEmpty(); });
    return std::move(result).value();
}

inline void await(Task<void> task)
{
    TaskScope scope;
    scope.start(std::move(task));
    runUntil([&] { return scope.isEmpty(); });
}

} // namespace vocalith::test
