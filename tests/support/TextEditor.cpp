#include "tests/support/TextEditor.h"

#include "tests/support/MainLoop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

namespace vocalith::test {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr auto kPatience = std::chrono::seconds(50); // on a machine that may be busy with other tests
constexpr auto kBetweenSaves = std::chrono::milliseconds(200);

/// Without what an editor does to a text on its own.
constexpr const char* kPlainFeatherPad = "[text]\nappendEmptyLine=false\nautoReplace=false\nnoIndent=true\n"
                                         "autoBracket=false\nremoveTrailingSpaces=false\n[window]\nremSize=false\n";

std::string windowClass(TextEditor::Kind kind)
{
    switch (kind) {
    case TextEditor::Kind::mousepad: return "Mousepad";
    case TextEditor::Kind::featherpad: return "FeatherPad";
    case TextEditor::Kind::xterm: return "XTerm";
    }
    return {};
}

std::vector<std::string> command(TextEditor::Kind kind, const std::string& file)
{
    switch (kind) {
    case TextEditor::Kind::mousepad: return {"mousepad", "--disable-server", file};
    case TextEditor::Kind::featherpad: return {"featherpad", "--standalone", file};
    case TextEditor::Kind::xterm: return {"xterm", "-u8", "-e", "/bin/sh", "-c", "stty -echo; exec cat > " + file};
    }
    return {};
}

} // namespace

std::string nameOf(TextEditor::Kind kind)
{
    return windowClass(kind);
}

TextEditor::TextEditor(const XDisplay& display, Kind kind, const std::string& text)
    : m_display(display), m_kind(kind), m_file(display.folder() / (windowClass(kind) + ".txt"))
{
    writeFile(display.home() / ".config" / "featherpad" / "fp.conf", kPlainFeatherPad);
    writeFile(m_file, text);
    m_process = display.start(command(kind, m_file.string()));
    display.waitForFocus(windowClass(kind));
    if (kind != Kind::xterm) { // until its file is there, what it is given may go to another tab
        const auto titled = "xdotool search --name '" + m_file.filename().string() + "' || true";
        EXPECT_TRUE(runUntil([&] { return !display.run({"/bin/sh", "-c", titled}).empty(); }));
    }
}

std::string TextEditor::saved() const
{
    return readFile(m_file);
}

void TextEditor::save() const
{
    m_display.press(m_kind == Kind::xterm ? "Return" : "ctrl+s");
}

void TextEditor::expectText(const std::string& text) const
{
    const auto expected = m_kind == Kind::xterm ? text + "\n" : text;
    if (m_kind == Kind::xterm)
        save();
    const auto deadline = SteadyClock::now() + kPatience;
    auto saveDue = SteadyClock::now();
    runUntil([&] {
        if (saved() == expected || SteadyClock::now() > deadline)
            return true;
        if (m_kind != Kind::xterm && SteadyClock::now() > saveDue) {
            save();
            saveDue = SteadyClock::now() + kBetweenSaves;
        }
        return false;
    });
    const auto found = saved();
    const auto end = std::min(found.size(), expected.size());
    const auto at = static_cast<std::size_t>(std::mismatch(found.begin(), found.begin() + end, expected.begin()).first -
                                             found.begin());
    EXPECT_TRUE(found == expected) << nameOf(m_kind) << " differs from byte " << at << " on: \"" << found.substr(at, 60)
                                   << "\" instead of \"" << expected.substr(at, 60) << "\"";
}

} // namespace vocalith::test
