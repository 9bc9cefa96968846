#include "base/Debouncer.h"
#include "tests/support/FakeClock.h"
#include "tests/support/MainLoop.h"

#include <gtest/gtest.h>

#include <string>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;

namespace {

TEST(Debouncer, RunsTheLastActionOnceAfterTheCallsOfAllCopiesWentQuiet)
{
    FakeClock clock;
    std::string ran;
    const Debouncer debounce(clock, 100ms);
    const Debouncer copy = debounce;
    debounce([&] { ran += 'a'; });
    clock.advance(60ms);
    copy([&] { ran += 'b'; });
    clock.advance(60ms);
    debounce([&] { ran += 'c'; });
    clock.advance(99ms);
    EXPECT_EQ(ran, "");
    clock.advance(1ms);
    EXPECT_EQ(ran, "c");
    clock.advance(1s);
    EXPECT_EQ(ran, "c");
    EXPECT_EQ(clock.pendingTimers(), 0u);
}

TEST(Debouncer, AnActionMayDebounceAgain)
{
    FakeClock clock;
    int ran = 0;
    const Debouncer debounce(clock, 100ms);
    debounce([&] {
        ++ran;
        debounce([&] { ++ran; });
    });
    clock.advance(100ms);
    EXPECT_EQ(ran, 1);
    clock.advance(100ms);
    EXPECT_EQ(ran, 2);
}

TEST(Debouncer, CancellingAndDroppingTheLastCopyEndTheWait)
{
    FakeClock clock;
    int ran = 0;
    {
        const Debouncer debounce(clock, 100ms);
        debounce([&] { ++ran; });
        debounce.cancel();
        EXPECT_EQ(clock.pendingTimers(), 0u);
        debounce([&] { ++ran; });
    }
    clock.advance(1s);
    EXPECT_EQ(ran, 0);
}

TEST(Debouncer, ReleasesWhatTheActionHolds)
{
    SystemClock clock;
    const auto held = std::make_shared<int>(0);
    {
        const Debouncer debounce(clock, 1ms);
        debounce([held, debounce] { ++*held; });
    }
    EXPECT_TRUE(runUntil([&] { return *held == 1; })) << "a copy inside the action is a copy like any other";
    drainMainThread();
    EXPECT_EQ(held.use_count(), 1) << "the action was kept after it had run";
}

} // namespace
