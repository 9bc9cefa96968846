#include "core/output/FocusContextService.h"
#include "tests/support/FakeAccessibility.h"
#include "tests/support/FakeClock.h"
#include "tests/support/FakeFocusedApp.h"
#include "tests/support/MainLoop.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;

namespace {

class Context : public testing::Test {
protected:
    Context()
    {
        accessibility.text = {"selected", "before ", " after", std::nullopt};
        accessibility.visibleText = "Dear Sir";
    }

public:
    ~Context() override { await(service.shutDown()); }

protected:
    void read() { tasks.start(storeResult(service.read(), context)); }

    FakeClock clock;
    FakeFocusedApp focusedApp;
    FakeAccessibility accessibility;
    FocusContextService service{focusedApp, accessibility, clock};
    std::optional<FocusContext> context;
    TaskScope tasks;
    const FocusContext all{"Editor", "org.example.editor", "letter.txt", "Dear Sir", "selected", "before ", " after"};
};

TEST_F(Context, HoldsApplicationWindowAndTheTextAroundTheCaret)
{
    read();
    drainMainThread();
    EXPECT_EQ(context, all);
    EXPECT_EQ(accessibility.limit, FocusContextService::kTextLimit);
}

TEST_F(Context, AFieldThatHidesWhatIsTypedIsNotRead)
{
    accessibility.isSecure = true;
    read();
    drainMainThread();
    EXPECT_EQ(accessibility.textReads, 0);
    EXPECT_EQ(context->textBeforeCursor, "");
    EXPECT_EQ(context->windowTitle, "letter.txt");
}

TEST_F(Context, WhoeverHangsCostsTheTimeLimitAndNothingOfTheOthers)
{
    for (const bool isApplication : {true, false}) {
        context.reset();
        focusedApp.hangs = isApplication;
        accessibility.hangs = !isApplication;
        read();
        clock.advance(199ms);
        drainMainThread();
        EXPECT_FALSE(context);
        clock.advance(1ms);
        drainMainThread();
        ASSERT_TRUE(context);
        EXPECT_EQ(context->applicationName, isApplication ? "" : all.applicationName);
        EXPECT_EQ(context->visibleText, isApplication ? all.visibleText : "");
    }
}

TEST_F(Context, AStopEndsTheReading)
{
    accessibility.hangs = true;
    read();
    tasks.requestStop();
    drainMainThread();
    EXPECT_TRUE(context);
}

} // namespace
