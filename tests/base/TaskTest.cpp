#include "base/Clock.h"
#include "base/TaskScope.h"
#include "base/Worker.h"
#include "tests/support/FakeClock.h"
#include "tests/support/MainLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;

namespace {

Task<Result<int, Cancelled>> sleepAndAnswer(Clock& clock, Duration delay, int answer)
{
    const auto slept = co_await sleepFor(clock, delay);
    if (!slept)
        co_return failure(Cancelled{});
    co_return answer;
}

Task<void> collect(Clock& clock, std::string& events)
{
    const auto first = co_await sleepAndAnswer(clock, 1s, 1);
    events += first ? "one " : "stopped ";
    const auto second = co_await sleepAndAnswer(clock, 1s, 2);
    events += second ? "two " : "stopped ";
}

TEST(Task, InheritsTheStopTokenThroughEveryLevelAndUnwindsFromTheLoop)
{
    FakeClock clock;
    std::string events;
    TaskScope scope;
    scope.start(collect(clock, events));
    clock.advance(1s);
    drainMainThread();
    EXPECT_EQ(events, "one ");

    scope.requestStop();
    EXPECT_EQ(events, "one ") << "requestStop resumed a task from inside the call";
    drainMainThread();
    EXPECT_EQ(events, "one stopped ");
    EXPECT_TRUE(scope.isEmpty());
    EXPECT_EQ(clock.pendingTimers(), 0u);

    scope.start(collect(clock, events)); // a stop concerns only what ran then
    clock.advance(1s);
    drainMainThread();
    clock.advance(1s);
    drainMainThread();
    EXPECT_EQ(events, "one stopped one two ");
}

TEST(Task, AwaitingAStoppedTasksLeafYieldsAtOnce)
{
    FakeClock clock;
    std::string events;
    TaskScope scope;
    scope.start(collect(clock, events));
    scope.requestStop();
    drainMainThread();
    EXPECT_EQ(events, "stopped stopped ");
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // the sanitizers keep tail calls from being made
Task<int> ready(int value)
{
    co_return value;
}

Task<int> sumOfReady(int count)
{
    int sum = 0;
    for (int i = 0; i < count; ++i) {
        const int value = co_await ready(1);
        sum += value;
    }
    co_return sum;
}

TEST(Task, AMillionReadyAwaitsDoNotGrowTheStack)
{
    EXPECT_EQ(await(sumOfReady(1'000'000)), 1'000'000);
}
#endif

Task<void> waitEmpty(TaskScope& scope, bool& empty)
{
    co_await scope.untilEmpty();
    empty = true;
}

TEST(TaskScope, UntilEmptyEndsWhenTheLastTaskHasUnwound)
{
    FakeClock clock;
    std::string events;
    TaskScope scope;
    TaskScope owner;
    bool empty = false;
    scope.start(collect(clock, events));
    owner.start(waitEmpty(scope, empty));
    drainMainThread();
    EXPECT_FALSE(empty);
    scope.requestStop();
    drainMainThread();
    EXPECT_TRUE(empty);
    EXPECT_TRUE(owner.isEmpty());
}

TEST(TaskScopeDeathTest, DestroyingARunningScopeIsFatal)
{
    EXPECT_DEATH(
        {
            FakeClock clock;
            std::string events;
            TaskScope scope;
            scope.start(collect(clock, events));
        },
        "task scope was destroyed");
}

TEST(Worker, RunsOffTheMainThreadInOrder)
{
    Worker worker;
    const auto mainThread = std::this_thread::get_id();
    const auto first =
        await(worker.run([mainThread](const StopToken&) { return std::this_thread::get_id() != mainThread; }));
    EXPECT_EQ(first, true);
}

TEST(Worker, AStopYieldsAtOnceWhileTheJobRunsOnAndIsTold)
{
    std::atomic<bool> entered = false;
    std::atomic<bool> told = false;
    std::atomic<bool> release = false;
    Worker worker;
    TaskScope scope;
    std::optional<Result<int, Cancelled>> result;
    scope.start(storeResult(worker.run([&](const StopToken& stop) {
        entered = true;
        while (!release)
            std::this_thread::yield();
        told = stop.stop_requested();
        return 1;
    }),
                            result));
    runUntil([&] { return entered.load(); });
    scope.requestStop();
    runUntil([&] { return scope.isEmpty(); });
    ASSERT_TRUE(result);
    EXPECT_FALSE(result->has_value());
    release = true;
    EXPECT_EQ(await(worker.run([](const StopToken&) { return 2; })), 2);
    EXPECT_TRUE(told);
}

TEST(Worker, AJobThatIsThereAtTheEndCannotAskForMore)
{
    std::atomic<bool> entered = false;
    std::atomic<bool> ranLater = false;
    std::optional<Result<int, Cancelled>> result;
    TaskScope scope;
    {
        Worker worker;
        scope.start(storeResult(worker.run([&](const StopToken& stop) {
            entered = true;
            while (!stop.stop_requested())
                std::this_thread::yield();
            worker.post([&] { ranLater = true; });
            return 1;
        }),
                                result));
        runUntil([&] { return entered.load(); });
    }
    runUntil([&] { return scope.isEmpty(); });
    EXPECT_FALSE(ranLater);
}

TEST(Worker, DestructionTellsTheRunningJobAndDropsTheOthers)
{
    std::atomic<bool> entered = false;
    std::atomic<int> ran = 0;
    {
        Worker worker;
        worker.post([&] { ++ran; });
        TaskScope scope;
        std::optional<Result<int, Cancelled>> result;
        scope.start(storeResult(worker.run([&](const StopToken& stop) {
            entered = true;
            while (!stop.stop_requested())
                std::this_thread::yield();
            return 1;
        }),
                                result));
        worker.post([&] { ++ran; });
        runUntil([&] { return entered.load(); });
        scope.requestStop();
        runUntil([&] { return scope.isEmpty(); });
    }
    EXPECT_GE(ran, 1);
}

} // namespace
