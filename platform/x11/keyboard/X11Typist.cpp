#include "platform/x11/keyboard/X11Typist_p.h"

#include "platform/x11/X11Connection.h"
#include "platform/x11/keyboard/X11HeldModifiers_p.h"

#include <fmt/format.h>

#include <X11/Xlib.h>

#include <algorithm>
#include <utility>

namespace vocalith {
namespace {

/// Characters between two pings: how many still come after a stop.
constexpr std::size_t kStretch = 48;
/// How far to look ahead for characters that need a key, so that the map changes seldom.
constexpr std::size_t kLookAhead = 400;
constexpr auto kPatience = std::chrono::seconds(5);
/// For windows that do not answer pings.
constexpr auto kPause = std::chrono::milliseconds(40);
/// After a stop, the application still gets this long to understand the keys that are on their way to it.
constexpr auto kUnderstood = std::chrono::milliseconds(500);

/// The characters, with one line feed for each line break and without controls, which no key types. What is not UTF-8
/// becomes U+FFFD.
std::u32string charactersOf(std::string_view utf8)
{
    std::u32string text;
    const auto add = [&](char32_t character) {
        const bool isControl = (character < U' ' && character != U'\n' && character != U'\t') || character == 0x7f;
        if (!isControl)
            text.push_back(character);
    };
    for (std::size_t at = 0; at < utf8.size();) {
        const auto lead = static_cast<unsigned char>(utf8[at]);
        const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        char32_t character = length == 1 ? lead : lead & (0x7FU >> length);
        bool isValid = (lead < 0x80 || lead >= 0xC2) && lead < 0xF5 && at + length <= utf8.size();
        for (std::size_t next = 1; isValid && next < length; ++next) {
            const auto byte = static_cast<unsigned char>(utf8[at + next]);
            isValid = (byte & 0xC0U) == 0x80;
            character = character << 6U | (byte & 0x3FU);
        }
        if (isValid && character == U'\r')
            character = at + 1 < utf8.size() && utf8[at + 1] == '\n' ? U'\0' : U'\n';
        add(isValid ? character : U'\uFFFD');
        at += isValid ? length : 1;
    }
    return text;
}

} // namespace

X11Typist::X11Typist(X11Keyboard& keyboard, Clock& clock, Logger logger)
    : m_keyboard(keyboard), m_connection(keyboard.connection()), m_windows(m_connection), m_clock(clock),
      m_logger(std::move(logger)),
      m_window(XCreateSimpleWindow(m_connection.display(), m_connection.root(), -1, -1, 1, 1, 0, 0, 0)),
      m_spareKeys(keyboard, m_window)
{}

X11Typist::~X11Typist()
{
    m_spareKeys.takeBack();
    XDestroyWindow(m_connection.display(), m_window);
}

/// Posts as much as the keyboard can type as it is, and where that is nothing changes the keyboard. Nothing of it can
/// come apart: the server belongs to us meanwhile.
X11Typist::Step X11Typist::typeSome(std::u32string_view& rest)
{
    const X11ServerGrab grab(m_connection);
    m_keyboard.refresh();
    if (m_connection.isLost() || !hasFocus())
        return Step::focusLost;
    if (m_keyboard.mapGeneration() != m_understood) {
        showMap();
        return Step::mapChanged;
    }
    if (const auto count = strike(rest.substr(0, kStretch)); count > 0) {
        rest.remove_prefix(count);
        return Step::typed;
    }
    const auto keys = m_spareKeys.count();
    std::vector<char32_t> characters;
    for (const auto character : rest.substr(0, kLookAhead)) {
        const auto stroke = m_keyboard.stroke(character);
        const bool isOwn = stroke && !m_spareKeys.isLent(stroke->key);
        if (isOwn || std::ranges::find(characters, character) != characters.end())
            continue;
        if (characters.size() == keys)
            break;
        characters.push_back(character);
    }
    if (characters.empty())
        return Step::impossible;
    m_spareKeys.lend(characters);
    showMap();
    return Step::mapChanged;
}

/// Some toolkits read a new map only when the next key comes, and would take what we post now for what it means then. A
/// key without a meaning makes them read it; after that they understand the keys of this map whatever becomes of it.
void X11Typist::showMap()
{
    m_keyboard.refresh();
    if (const auto silent = m_spareKeys.silentKey(); silent != 0) {
        m_keyboard.post(silent, true);
        m_keyboard.post(silent, false);
    }
    m_shown = m_keyboard.mapGeneration();
}

/// Toolkits move the focus about inside a window, so what counts is the window around it.
bool X11Typist::hasFocus()
{
    const auto focus = m_windows.inputFocus();
    const bool isThere = focus == m_focus || (focus != 0 && m_windows.topLevel(focus) == m_target);
    if (isThere)
        m_focus = focus;
    return isThere;
}

/// Yields how many characters it has posted.
std::size_t X11Typist::strike(std::u32string_view text)
{
    std::size_t count = 0;
    const X11HeldModifiers held(m_keyboard);
    const auto shift = m_keyboard.modifierKey(ShiftMask);
    for (; count < text.size(); ++count) {
        const auto stroke = m_keyboard.stroke(text[count]);
        if (!stroke)
            break;
        if (stroke->hasShift)
            m_keyboard.post(shift, true);
        m_keyboard.post(stroke->key, true);
        m_keyboard.post(stroke->key, false);
        if (stroke->hasShift)
            m_keyboard.post(shift, false);
    }
    return count;
}

/// Waits until the application has come to what was sent so far. Yields false when it does not come to it.
Task<Result<bool, Cancelled>> X11Typist::settle()
{
    if (!m_answersPings) {
        const auto paused = co_await sleepFor(m_clock, kPause);
        if (!paused)
            co_return failure(Cancelled{});
        co_return true;
    }
    const auto time = static_cast<long>(m_connection.serverTime());
    OneShot<bool> answered;
    const auto pong = m_connection.event.subscribe([&, resolve = answered.resolver()](const XEvent& event) {
        if (event.type == ClientMessage && event.xclient.message_type == m_connection.atom("WM_PROTOCOLS") &&
            static_cast<Atom>(event.xclient.data.l[0]) == m_connection.atom("_NET_WM_PING") &&
            event.xclient.data.l[1] == time && static_cast<Window>(event.xclient.data.l[2]) == m_target)
            resolve(true);
    });
    const auto patience = m_clock.after(kPatience, [resolve = answered.resolver()] { resolve(false); });
    sendPing(time);
    co_return co_await answered;
}

void X11Typist::sendPing(long time)
{
    XEvent ping{};
    ping.xclient.type = ClientMessage;
    ping.xclient.window = m_target;
    ping.xclient.message_type = m_connection.atom("WM_PROTOCOLS");
    ping.xclient.format = 32;
    ping.xclient.data.l[0] = static_cast<long>(m_connection.atom("_NET_WM_PING"));
    ping.xclient.data.l[1] = time;
    ping.xclient.data.l[2] = static_cast<long>(m_target);
    X11ErrorTrap trap(m_connection);
    XSendEvent(m_connection.display(), m_target, False, NoEventMask, &ping);
}

Task<Result<void, KeyEventsError>> X11Typist::type(std::string text)
{
    m_takeBack.reset();
    m_understood = -1;
    m_focus = m_windows.inputFocus();
    m_target = m_focus == 0 ? 0 : m_windows.topLevel(m_focus);
    const auto protocols = m_target == 0 ? std::vector<unsigned long>() : m_windows.numbers(m_target, "WM_PROTOCOLS");
    m_answersPings = std::ranges::find(protocols, m_connection.atom("_NET_WM_PING")) != protocols.end();
    // Answers go to the root window, from GTK under the second mask, from Qt under the first.
    XSelectInput(m_connection.display(), m_connection.root(), StructureNotifyMask | SubstructureNotifyMask);
    const auto characters = charactersOf(text);
    const auto result = co_await typeAll(characters);
    XSelectInput(m_connection.display(), m_connection.root(), NoEventMask);
    if (result)
        m_spareKeys.takeBack();
    else
        m_takeBack = m_clock.after(kUnderstood, [this] { m_spareKeys.takeBack(); });
    co_return result;
}

Task<Result<void, KeyEventsError>> X11Typist::typeAll(std::u32string_view rest)
{
    using Kind = KeyEventsError::Kind;
    const auto token = co_await currentStopToken();
    while (!rest.empty()) {
        if (token.stop_requested())
            co_return failure(KeyEventsError{Kind::cancelled});
        const auto step = typeSome(rest);
        if (step == Step::impossible)
            co_return failure(KeyEventsError{Kind::failed, "No key is free for the characters it lacks."});
        if (step == Step::focusLost)
            co_return failure(KeyEventsError{Kind::failed, "Another window took the focus while text was typed."});
        const auto hasSettled = co_await settle();
        if (!hasSettled)
            co_return failure(KeyEventsError{Kind::cancelled});
        if (!*hasSettled)
            co_return failure(KeyEventsError{Kind::failed, "The application does not take what is typed."});
        m_understood = m_shown;
    }
    co_return Result<void, KeyEventsError>();
}

} // namespace vocalith
