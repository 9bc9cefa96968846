#include "platform/atspi/WindowText_p.h"

#include "platform/atspi/CodePoints_p.h"

#include <algorithm>
#include <array>
#include <memory>

namespace vocalith {
namespace {

using atspi::Role;
using atspi::State;

constexpr int kMostRequests = 8000;
constexpr std::size_t kMostChildren = 200;
constexpr std::array kLeftOut{Role::menuBar, Role::passwordText, Role::scrollBar, Role::toolBar};

/// What one object shows, and those in it.
struct Shown {
    std::string text;
    std::vector<std::unique_ptr<Shown>> children;
};

void collect(const Shown& shown, std::string& text, std::string& last)
{
    if (!shown.text.empty() && shown.text != last) { // a button and the label in it say the same
        text += shown.text + '\n';
        last = shown.text;
    }
    for (const auto& child : shown.children)
        collect(*child, text, last);
}

/// Reads the tree of a window. Kept alive by the requests that run.
class WindowReading : public std::enable_shared_from_this<WindowReading> {
public:
    WindowReading(AtspiBus& bus, int limit, Instant deadline, OneShot<bool>::Resolver resolve)
        : m_bus(bus), m_limit(limit), m_deadline(deadline), m_resolve(std::move(resolve))
    {}

    void start(const AtspiReference& window) { readChildren(window, m_root); }

    std::string text() const
    {
        std::string text;
        std::string last;
        collect(m_root, text, last);
        if (!text.empty())
            text.pop_back();
        return firstCharacters(std::move(text), m_limit);
    }

private:
    void ask(AtspiCall call, AtspiBus::Handler handler)
    {
        if (++m_asked > kMostRequests || m_bus.clock().instant() >= m_deadline)
            return;
        ++m_open;
        m_bus.call(call, m_deadline,
                   [self = shared_from_this(), handler = std::move(handler)](const QDBusMessage& answer) {
                       handler(answer);
                       if (--self->m_open == 0)
                           self->m_resolve(true);
                   });
    }

    void readChildren(const AtspiReference& object, Shown& shown)
    {
        ask({object, atspi::kAccessible, "GetChildren"}, [this, &shown](const QDBusMessage& answer) {
            auto children = referencesOf(answer);
            children.resize(std::min(children.size(), kMostChildren));
            for (const auto& child : children) {
                shown.children.push_back(std::make_unique<Shown>());
                readState(child, *shown.children.back());
            }
        });
    }

    void readState(const AtspiReference& object, Shown& shown)
    {
        ask({object, atspi::kAccessible, "GetState"}, [this, object, &shown](const QDBusMessage& answer) {
            const auto states = statesOf(answer);
            if (atspi::has(states, State::showing))
                readRole(object, shown, !atspi::has(states, State::managesDescendants));
        });
    }

    void readRole(const AtspiReference& object, Shown& shown, bool hasReadableChildren)
    {
        ask({object, atspi::kAccessible, "GetRole"}, [this, object, &shown, hasReadableChildren](const auto& answer) {
            const auto role = numberOf(answer);
            if (!role || std::ranges::find(kLeftOut, static_cast<Role>(*role)) != kLeftOut.end())
                return;
            readText(object, shown);
            if (hasReadableChildren)
                readChildren(object, shown);
        });
    }

    /// The text that the object holds, or else its name.
    void readText(const AtspiReference& object, Shown& shown)
    {
        ask(AtspiCall::property(object, atspi::kAccessible, "Name"), [&shown](const QDBusMessage& answer) {
            if (shown.text.empty())
                shown.text = textOf(answer).value_or("");
        });
        ask(AtspiCall::property(object, atspi::kText, "CharacterCount"), [this, object, &shown](const auto& answer) {
            const int length = std::min(numberOf(answer).value_or(0), m_limit);
            if (length <= 0)
                return;
            ask({object, atspi::kText, "GetText", {0, length}}, [&shown](const QDBusMessage& text) {
                if (auto held = textOf(text); held && !held->empty())
                    shown.text = std::move(*held);
            });
        });
    }

    AtspiBus& m_bus;
    const int m_limit;
    const Instant m_deadline;
    const OneShot<bool>::Resolver m_resolve;
    Shown m_root;
    int m_asked = 0;
    int m_open = 0;
};

} // namespace

Task<std::string> windowText(AtspiBus& bus, AtspiReference window, int limit, Instant deadline)
{
    OneShot<bool> complete;
    const auto reading = std::make_shared<WindowReading>(bus, limit, deadline, complete.resolver());
    reading->start(window);
    co_await complete;
    co_return reading->text();
}

} // namespace vocalith
