#include "platform/atspi/AtspiAccessibility.h"

#include "tests/support/FakeClock.h"
#include "tests/support/MainLoop.h"
#include "tests/support/TextEditor.h"
#include "tests/support/XDisplay.h"

#include <gtest/gtest.h>

#include <csignal>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;

namespace {

using Kind = TextEditor::Kind;

/// Small, accented, one UTF-16 unit in three bytes, and two units in four bytes.
const std::string kText = "ab é 語 😀 cd";
constexpr auto kLimit = 200ms; ///< of one question
constexpr auto kSlack = 60ms;  ///< the clock goes on a little while the answer comes in

class Atspi : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(await(accessibility.connected())); }
    void TearDown() override { await(accessibility.shutDown()); }

    std::unique_ptr<FocusedElement> focusedElement() { return await(accessibility.focusedElement()); }
    /// Once the application has one; it draws its window before it joins the bus.
    std::unique_ptr<FocusedElement> waitForElement(const TextEditor& editor)
    {
        std::unique_ptr<FocusedElement> element;
        runUntil([&] {
            element = focusedElement();
            return element && element->processId() == editor.processId();
        });
        return element;
    }
    FocusedText textNow()
    {
        const auto element = focusedElement();
        return element ? await(element->text(100)).value_or(FocusedText()) : FocusedText();
    }

    /// The answer to a question while the clock goes on, which must be there within the limit.
    template <class T>
    T inTime(Task<T> question)
    {
        std::optional<T> answer;
        TaskScope scope;
        scope.start(storeResult(std::move(question), answer));
        Duration passed{};
        constexpr auto kStep = 5ms;
        runUntil([&] {
            if (scope.isEmpty())
                return true;
            clock.advance(kStep);
            passed += kStep;
            return false;
        });
        EXPECT_LT(passed, kLimit + kSlack);
        return std::move(answer).value();
    }

    XDisplay display{{.hasWindowManager = true, .hasAccessibility = true}};
    FakeClock clock; ///< stands still: a busy machine has all the time that it needs
    AtspiAccessibility accessibility{clock, display.busAddress()};
};

class AtspiInEditor : public Atspi, public testing::WithParamInterface<Kind> {};

INSTANTIATE_TEST_SUITE_P(Toolkits, AtspiInEditor, testing::Values(Kind::mousepad, Kind::featherpad),
                         [](const auto& instance) { return nameOf(instance.param); });

TEST_P(AtspiInEditor, ReadsAndReplacesWhatStandsAroundTheCaret)
{
    EXPECT_TRUE(accessibility.isProcessTrusted());
    const TextEditor editor(display, GetParam(), kText);
    const auto element = waitForElement(editor);
    ASSERT_TRUE(element);
    EXPECT_TRUE(element->isEditable());
    EXPECT_FALSE(element->isSecure());

    display.press("ctrl+Home");
    runUntil([&] { return textNow().before.empty(); });
    EXPECT_EQ(textNow().after, kText);
    EXPECT_EQ(await(element->setSelectedText("Ñandú 🙂, ")), 0);
    EXPECT_EQ(textNow().before, "Ñandú 🙂, ") << "the caret does not stand behind the text";
    EXPECT_EQ(await(element->setSelectedText("two ")), 0);

    display.press("ctrl+End");
    display.press("shift+ctrl+Left"); // "cd"
    runUntil([&] { return !textNow().selection.empty(); });
    const auto selected = textNow();
    EXPECT_EQ(selected.selection, "cd");
    EXPECT_EQ(selected.before, "Ñandú 🙂, two ab é 語 😀 ");
    EXPECT_EQ(selected.after, "");
    ASSERT_TRUE(selected.caret);
    EXPECT_GT(selected.caret->height, 5);
    EXPECT_EQ(await(element->text(3)).value_or(FocusedText()).before, " 😀 ");

    EXPECT_EQ(await(element->setSelectedText("日本語")), 0);
    EXPECT_EQ(textNow().before, "Ñandú 🙂, two ab é 語 😀 日本語");
    EXPECT_EQ(textNow().selection, "");
    EXPECT_NE(await(element->visibleText(4000)).find("語 😀 日本語"), std::string::npos);
    editor.expectText("Ñandú 🙂, two ab é 語 😀 日本語");
}

TEST_P(AtspiInEditor, AHungApplicationCostsAtMostItsTime)
{
    const TextEditor editor(display, GetParam(), kText);
    const auto element = waitForElement(editor);
    ASSERT_TRUE(element);
    editor.signal(SIGSTOP);
    EXPECT_FALSE(inTime(accessibility.focusedElement()));
    EXPECT_NE(inTime(element->setSelectedText("x")), 0);
    EXPECT_FALSE(inTime(element->text(100)));
    EXPECT_EQ(inTime(element->visibleText(100)), "");
    editor.signal(SIGCONT);
}

} // namespace
