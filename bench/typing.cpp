// Nothing that is typed gets lost: ten thousand characters of several scripts into a third-party editor, compared with
// what the editor saves.

#include "platform/x11/X11Connection.h"
#include "platform/x11/keyboard/X11KeyEvents.h"
#include "tests/support/MainLoop.h"
#include "tests/support/TextEditor.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cstdio>

using namespace vocalith;
using namespace vocalith::test;

namespace {

constexpr int kCharacters = 10'000;

std::size_t length(const std::string& utf8)
{
    return static_cast<std::size_t>(std::count_if(
        utf8.begin(), utf8.end(), [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80; }));
}

std::string sample()
{
    const std::string paragraph =
        "The quick brown fox jumps over the lazy dog, 1234567890 times; \"quoted\" & (bracketed)!\n"
        "Zwölf Boxkämpfer jagen Viktor quer über den großen Sylter Deich.\n"
        "Съешь ещё этих мягких французских булок, да выпей чаю.\n"
        "いろはにほへと ちりぬるを 我が世誰ぞ 常ならむ — 🎉\n";
    std::string text;
    while (length(text) < kCharacters)
        text += paragraph;
    return text;
}

std::size_t errors(const std::string& found, const std::string& expected)
{
    std::size_t wrong =
        found.size() > expected.size() ? found.size() - expected.size() : expected.size() - found.size();
    for (std::size_t at = 0; at < std::min(found.size(), expected.size()); ++at)
        wrong += found[at] != expected[at] ? 1U : 0U;
    return wrong;
}

bool measure(TextEditor::Kind kind)
{
    const XDisplay display;
    const auto connection = X11Connection::open(display.name());
    SystemClock clock;
    X11KeyEvents keys(**connection, clock, {});
    const TextEditor editor(display, kind);
    const auto text = sample();
    const auto source = keys.createSource(KeyEvents::SourceState::privateState);
    const auto start = std::chrono::steady_clock::now();
    const auto typed = await(source->type(text));
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
    if (!typed)
        std::printf("%s\n", userMessage(typed.error()).c_str());
    editor.expectText(text);
    const auto wrong = errors(editor.saved(), text);
    const auto count = length(text);
    std::printf("%zu characters typed into %s: %zu wrong (limit 0), %.0f a second\n", count, nameOf(kind).c_str(),
                wrong, static_cast<double>(count) / passed.count());
    return wrong == 0;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const bool gtk = measure(TextEditor::Kind::mousepad);
    const bool qt = measure(TextEditor::Kind::featherpad);
    return gtk && qt ? 0 : 1;
}
