#include "platform/atspi/AtspiAccessibility.h"
#include "tests/platform/atspi/AccessibleApplication.h"
#include "tests/support/FakeClock.h"
#include "tests/support/MainLoop.h"

#include <gtest/gtest.h>

#include <functional>

using namespace vocalith;
using namespace vocalith::test;

namespace {

using Object = AccessibleApplication::Object;
constexpr auto kFocused = AccessibleApplication::kFocused;
constexpr auto kEditable = AccessibleApplication::kEditable;
constexpr auto kShowing = AccessibleApplication::kShowing;

Object window(std::vector<QString> children)
{
    return {"/window", {AccessibleApplication::kActive, kShowing}, std::move(children)};
}

Object field(const QString& path, const QString& text)
{
    return {path, {kEditable, kFocused, kShowing}, {}, 0, text};
}

/// The program's side of it, connected.
class Client {
public:
    explicit Client(const AccessibleApplication& application) : accessibility(clock, application.busAddress())
    {
        EXPECT_TRUE(await(accessibility.connected()));
    }
    ~Client() { await(accessibility.shutDown()); }

    std::unique_ptr<FocusedElement> element() { return await(accessibility.focusedElement()); }

    FakeClock clock; ///< stands still: a busy machine has all the time that it needs
    AtspiAccessibility accessibility;
};

TEST(AtspiToolkit, OfSeveralObjectsThatClaimTheFocusTheOneThatTakesTextIsMeantOrTheDeepest)
{
    const std::set<unsigned> focused{kFocused, kShowing};
    struct Case {
        std::vector<Object> objects;
        const char* before;
    };
    const std::vector<Case> cases{
        {{window({"/tab", "/box"}),
          {"/tab", focused, {}, 0, "tab", 3},
          {"/box", {kShowing}, {"/field"}},
          {"/field", {kEditable, kFocused, kShowing}, {"/view"}, 0, "field", 5},
          {"/view", focused, {}, 0, "view", 4}},
         "field"},
        {{window({"/deep", "/field"}),
          {"/deep", focused, {"/view"}, 0, "deep", 4},
          {"/view", focused},
          {"/field", {kEditable, kFocused, kShowing}, {}, 0, "field", 5}},
         "field"},
        {{window({"/scope"}), {"/scope", focused, {"/inner"}, 0, "scope", 5}, {"/inner", focused, {}, 0, "inner", 5}},
         "inner"},
    };
    for (const auto& testCase : cases) {
        const AccessibleApplication application(testCase.objects);
        Client client(application);
        const auto element = client.element();
        ASSERT_TRUE(element);
        EXPECT_EQ(await(element->text(10))->before, testCase.before);
    }
}

TEST(AtspiToolkit, NothingIsFoundInAWindowThatIsNotActiveOrOutOfSight)
{
    for (const auto& states : {std::set<unsigned>{kShowing}, std::set{AccessibleApplication::kActive}}) {
        Object hidden{"/box", {}, {"/field"}};
        const AccessibleApplication application({{"/window", states, {"/box"}}, hidden, field("/field", "text")});
        Client client(application);
        EXPECT_FALSE(client.element());
    }
}

TEST(AtspiToolkit, AFieldThatHidesWhatIsTypedIsWrittenButNeverRead)
{
    auto password = field("/password", "secret");
    password.role = AccessibleApplication::kPassword;
    const AccessibleApplication application({window({"/label", "/password"}), {"/label"}, password});
    Client client(application);
    const auto element = client.element();
    ASSERT_TRUE(element);
    EXPECT_TRUE(element->isSecure());
    EXPECT_FALSE(await(element->text(10)));
    EXPECT_EQ(await(element->visibleText(100)), "name of /label");
    EXPECT_EQ(await(element->setSelectedText("new ")), 0);
    EXPECT_FALSE(application.wasAsked("/password", "GetText"));
}

TEST(AtspiToolkit, EachToolkitIsGivenTheLengthInItsUnits)
{
    for (const auto& [toolkit, length] : {std::pair("gtk", 9), std::pair("Qt", 4), std::pair("", 9)}) {
        AccessibleApplication application({window({"/field"}), field("/field", "")});
        application.toolkit = toolkit;
        Client client(application);
        EXPECT_EQ(await(client.element()->setSelectedText("é語😀")), 0);
        EXPECT_EQ(application.insertedLengths, std::vector<int>{length});
    }
}

TEST(AtspiToolkit, AnInsertionThatDidNotHappenIsAnError)
{
    using Fault = std::function<void(AccessibleApplication&)>;
    const std::vector<std::pair<const char*, Fault>> faults{
        {"says no", [](auto& application) { application.insertion = false; }},
        {"answers with an error", [](auto& application) { application.insertion.reset(); }},
        {"says yes and does nothing", [](auto& application) { application.insertsInTruth = false; }},
        {"answers nonsense", [](auto& application) { application.answersNonsense = true; }},
    };
    for (const auto& [name, fault] : faults) {
        SCOPED_TRACE(name);
        AccessibleApplication application({window({"/field"}), field("/field", "text")});
        Client client(application);
        const auto element = client.element();
        fault(application);
        EXPECT_NE(await(element->setSelectedText("x")), 0);
    }
    const AccessibleApplication readOnly({window({"/view"}), {"/view", {kFocused, kShowing}, {}, 0, "text"}});
    Client client(readOnly);
    EXPECT_NE(await(client.element()->setSelectedText("x")), 0);
    EXPECT_FALSE(readOnly.wasAsked("/view", "InsertText"));
}

TEST(AtspiToolkit, NonsenseIsNoElement)
{
    AccessibleApplication application({window({"/field"}), field("/field", "text")});
    application.answersNonsense = true;
    Client client(application);
    EXPECT_FALSE(client.element());
}

TEST(AtspiToolkit, ApplicationsAreAskedToBeAccessibleForAsLongAsSomebodyListens)
{
    struct Case {
        bool wasEnabled;
        bool hasScreenReader;
        bool isEnabledAfter;
    };
    for (const auto& testCase : {Case{false, false, false}, Case{true, false, true}, Case{false, true, true}}) {
        AccessibleApplication application({window({})});
        application.isEnabled = testCase.wasEnabled;
        {
            Client client(application);
            EXPECT_TRUE(application.isEnabled);
            application.hasScreenReader = testCase.hasScreenReader;
        }
        EXPECT_EQ(application.isEnabled, testCase.isEnabledAfter);
    }
}

TEST(AtspiToolkit, WithoutAnAccessibilityBusNothingIsTrustedAndNothingWaits)
{
    for (const bool hasSessionBus : {true, false}) {
        const SessionBus bus;
        SystemClock clock;
        AtspiAccessibility accessibility(clock, hasSessionBus ? bus.address() : "unix:path=/nonexistent/bus");
        EXPECT_FALSE(await(accessibility.connected()));
        EXPECT_FALSE(accessibility.isProcessTrusted());
        EXPECT_FALSE(await(accessibility.focusedElement()));
        await(accessibility.shutDown());
    }
}

} // namespace
