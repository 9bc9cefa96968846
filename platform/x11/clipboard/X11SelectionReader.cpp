#include "platform/x11/clipboard/X11SelectionReader_p.h"

#include "base/MainThread.h"
#include "base/OneShot.h"
#include "platform/x11/X11Connection.h"

#include <fmt/format.h>

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

namespace vocalith {
namespace {

constexpr auto kPatience = std::chrono::milliseconds(500);
constexpr auto kLongest = std::chrono::seconds(3);
constexpr int kQuickTurns = 4;     ///< events are told in fewer than that until an answer is here
constexpr long kSlice = 64 * 1024; ///< in units of four bytes
constexpr std::size_t kMostTargets = 200;
constexpr std::size_t kMostBytes = 1U << 30U;

struct Freed {
    void operator()(unsigned char* data) const { XFree(data); }
};

/// Targets that say something about the selection or do something, and hold no data.
bool isMeta(std::string_view target)
{
    constexpr std::array<std::string_view, 8> kNames{
        "", "TARGETS", "MULTIPLE", "TIMESTAMP", "SAVE_TARGETS", "DELETE", "INSERT_SELECTION", "INSERT_PROPERTY"};
    return std::ranges::find(kNames, target) != kNames.end();
}

void append(std::string& bytes, const unsigned char* data, unsigned long count, int format)
{
    if (format != 32) {
        bytes.append(reinterpret_cast<const char*>(data), count * static_cast<unsigned long>(format / 8));
        return;
    }
    const auto* longs = reinterpret_cast<const unsigned long*>(data);
    for (unsigned long index = 0; index < count; ++index) {
        const auto unit = static_cast<std::uint32_t>(longs[index]);
        bytes.append(reinterpret_cast<const char*>(&unit), sizeof unit);
    }
}

std::vector<unsigned long> unitsOf(const std::string& bytes)
{
    std::vector<unsigned long> units;
    for (std::size_t at = 0; at + sizeof(std::uint32_t) <= bytes.size(); at += sizeof(std::uint32_t)) {
        std::uint32_t unit = 0;
        std::memcpy(&unit, bytes.data() + at, sizeof unit);
        units.push_back(unit);
    }
    return units;
}

} // namespace

/// One talk with one owner, over a property that no other talk uses: an answer that comes too late reaches nobody.
class X11SelectionReader::Conversation {
public:
    Conversation(X11SelectionReader& reader, unsigned long selection, Duration patience = kPatience)
        : m_connection(reader.m_connection), m_clock(reader.m_clock), m_window(reader.m_window), m_selection(selection),
          m_patience(patience),
          m_property(m_connection.atom(fmt::format("_VOCALITH_READ_{}", reader.m_conversations++ % 8))),
          m_incremental(m_connection.atom("INCR")), m_end(m_clock.instant() + kLongest),
          m_events(m_connection.event.subscribe([this](const XEvent& event) { handle(event); }))
    {
        XDeleteProperty(m_connection.display(), m_window, m_property);
    }

    unsigned long selection() const { return m_selection; }
    bool hasStalled() const { return m_hasStalled; }

    /// Asks the owner for that form of the selection.
    void ask(unsigned long target);
    /// The form asked for last; nothing when the owner does not give it, or has stalled.
    Task<Result<std::optional<X11SelectionForm>, Cancelled>> answer();

private:
    enum class Arrival { answer, refusal, data, stalled };
    struct Value {
        Atom type = None;
        int format = 8;
        std::string bytes;
    };

    void handle(const XEvent& event);
    void arrive(Arrival arrival);
    bool isAnswered() const;
    void waitBriefly();
    Task<Result<Arrival, Cancelled>> next();
    Task<Result<bool, Cancelled>> take(Value& value);
    Task<Result<bool, Cancelled>> takePieces(Value& value);
    unsigned long takeSlice(Value& value, long offset);

    X11Connection& m_connection;
    Clock& m_clock;
    const unsigned long m_window;
    const unsigned long m_selection;
    const Duration m_patience;
    const unsigned long m_property;
    const unsigned long m_incremental;
    const Instant m_end;
    unsigned long m_target = None;
    Instant m_lastSign; ///< of life, or when it was asked
    bool m_hasStalled = false;
    bool m_isQuick = true; ///< all answers have come within a moment
    std::deque<Arrival> m_arrivals;
    std::optional<OneShot<Arrival>::Resolver> m_waiting;
    Subscription m_events;
};

void X11SelectionReader::Conversation::handle(const XEvent& event)
{
    if (event.type == SelectionNotify && event.xselection.requestor == m_window &&
        event.xselection.selection == m_selection && event.xselection.target == m_target) {
        if (event.xselection.property == m_property)
            arrive(Arrival::answer);
        else if (event.xselection.property == None)
            arrive(Arrival::refusal);
    }
    if (event.type == PropertyNotify && event.xproperty.window == m_window && event.xproperty.atom == m_property &&
        event.xproperty.state == PropertyNewValue)
        arrive(Arrival::data);
}

void X11SelectionReader::Conversation::arrive(Arrival arrival)
{
    m_lastSign = m_clock.instant();
    if (const auto waiting = std::exchange(m_waiting, std::nullopt))
        (*waiting)(arrival);
    else
        m_arrivals.push_back(arrival);
}

Task<Result<X11SelectionReader::Conversation::Arrival, Cancelled>> X11SelectionReader::Conversation::next()
{
    if (!m_arrivals.empty()) {
        const auto first = m_arrivals.front();
        m_arrivals.pop_front();
        m_lastSign = m_clock.instant(); // heard only now, so what is asked next has its whole time
        co_return first;
    }
    OneShot<Arrival> arrived;
    m_waiting = arrived.resolver();
    const auto patience = std::min(m_lastSign + m_patience, m_end) - m_clock.instant();
    const auto timer = m_clock.after(std::max<Duration>(patience, Duration::zero()),
                                     [resolve = arrived.resolver()] { resolve(Arrival::stalled); });
    const auto arrival = co_await arrived;
    m_waiting.reset();
    if (arrival && *arrival == Arrival::stalled)
        m_hasStalled = true;
    co_return arrival;
}

unsigned long X11SelectionReader::Conversation::takeSlice(Value& value, long offset)
{
    unsigned long count = 0;
    unsigned long rest = 0;
    unsigned char* data = nullptr;
    // The property goes once its last slice has been read.
    if (XGetWindowProperty(m_connection.display(), m_window, m_property, offset, kSlice, True, AnyPropertyType,
                           &value.type, &value.format, &count, &rest, &data) != Success ||
        m_connection.isLost())
        return 0;
    const std::unique_ptr<unsigned char, Freed> owned(data);
    if (value.type != m_incremental)
        append(value.bytes, data, count, value.format);
    return rest;
}

/// Reads the property in slices and lets the event loop run between them. Yields whether it held anything.
Task<Result<bool, Cancelled>> X11SelectionReader::Conversation::take(Value& value)
{
    const auto before = value.bytes.size();
    for (long offset = 0; takeSlice(value, offset) > 0; offset += kSlice) {
        OneShot<bool> turn;
        postToMainThread([resolve = turn.resolver()] { resolve(true); });
        const auto isOn = co_await turn;
        if (!isOn)
            co_return failure(Cancelled{});
    }
    co_return value.bytes.size() > before;
}

Task<Result<bool, Cancelled>> X11SelectionReader::Conversation::takePieces(Value& value)
{
    while (value.bytes.size() < kMostBytes) {
        const auto arrival = co_await next();
        if (!arrival)
            co_return failure(Cancelled{});
        if (*arrival != Arrival::data)
            co_return false;
        const auto hadData = co_await take(value);
        if (!hadData)
            co_return failure(Cancelled{});
        if (!*hadData)
            co_return true;
    }
    m_hasStalled = true; // whatever that is, it is not going to end
    co_return false;
}

bool X11SelectionReader::Conversation::isAnswered() const
{
    return std::ranges::any_of(m_arrivals, [](Arrival arrival) { return arrival != Arrival::data; });
}

/// Most owners answer at once, and then there is no need to go through the event loop.
void X11SelectionReader::Conversation::waitBriefly()
{
    for (int turn = 0; turn < kQuickTurns && m_isQuick && !isAnswered(); ++turn)
        m_isQuick = m_connection.waitBriefly(); // never again once it was in vain
}

void X11SelectionReader::Conversation::ask(unsigned long target)
{
    m_target = target;
    m_arrivals.clear();
    m_lastSign = m_clock.instant();
    XConvertSelection(m_connection.display(), m_selection, target, m_property, m_window, CurrentTime);
    XFlush(m_connection.display());
}

Task<Result<std::optional<X11SelectionForm>, Cancelled>> X11SelectionReader::Conversation::answer()
{
    waitBriefly();
    auto arrival = Arrival::data;
    while (arrival == Arrival::data) { // the property is written before the answer comes
        const auto arrived = co_await next();
        if (!arrived)
            co_return failure(Cancelled{});
        arrival = *arrived;
    }
    if (arrival != Arrival::answer)
        co_return std::nullopt;
    m_arrivals.clear();
    Value value;
    const auto taken = co_await take(value);
    if (!taken)
        co_return failure(Cancelled{});
    if (value.type == m_incremental) {
        const auto isWhole = co_await takePieces(value);
        if (!isWhole)
            co_return failure(Cancelled{});
        if (!*isWhole)
            co_return std::nullopt;
    }
    if (value.type == None)
        co_return std::nullopt;
    co_return X11SelectionForm{m_target, value.type, value.format,
                               std::make_shared<const std::string>(std::move(value.bytes))};
}

std::shared_ptr<X11SelectionReader::Conversation> X11SelectionReader::ask(unsigned long selection)
{
    const auto targets = m_connection.atom("TARGETS");
    auto conversation = std::make_shared<Conversation>(*this, selection);
    conversation->ask(targets);
    return conversation;
}

Task<Result<X11SelectionReader::Content, Cancelled>> X11SelectionReader::read(std::shared_ptr<Conversation> asked)
{
    Content content;
    Conversation& conversation = *asked;
    const auto answer = co_await conversation.answer();
    if (!answer)
        co_return failure(Cancelled{});
    std::vector<unsigned long> wanted;
    if (*answer && (*answer)->format == 32)
        wanted = unitsOf(*(*answer)->payload);
    // Where there is no owner the server itself refuses.
    content.isComplete =
        answer->has_value() || XGetSelectionOwner(m_connection.display(), conversation.selection()) == None;
    if (wanted.size() > kMostTargets)
        wanted.resize(kMostTargets);
    for (const auto target : wanted) {
        const bool isKnown = std::ranges::find(content.forms, target, &X11SelectionForm::target) != content.forms.end();
        if (isKnown || isMeta(m_connection.atomName(target)))
            continue;
        conversation.ask(target);
        const auto form = co_await conversation.answer();
        if (!form)
            co_return failure(Cancelled{});
        if (*form)
            content.forms.push_back(**form);
        if (conversation.hasStalled()) {
            content.isComplete = false;
            break;
        }
    }
    co_return content;
}

Task<void> X11SelectionReader::request(unsigned long selection, unsigned long target, Duration patience)
{
    Conversation conversation(*this, selection, patience);
    conversation.ask(target);
    co_await conversation.answer();
}

} // namespace vocalith
