#include "platform/atspi/FocusSearch_p.h"

#include <algorithm>
#include <chrono>

namespace vocalith {
namespace {

using atspi::State;

constexpr int kMostRequests = 8000;
constexpr std::chrono::milliseconds kPatience{60}; // for one that takes text, once another one has the focus
constexpr std::size_t kMostChildren = 300;         // of one object: a list's rows are not looked through

/// One walk down the trees of the active windows. Kept alive by the requests that run; each answer leads to the next
/// ones. Toolkits give the focus to several objects: those around the one that is meant, its parts, the tab of its
/// page. The one that takes text is meant, and without such a one the deepest.
class FocusSearch : public std::enable_shared_from_this<FocusSearch> {
public:
    using Found = OneShot<std::optional<FocusedNode>>;

    FocusSearch(AtspiBus& bus, Instant deadline, Found::Resolver resolve)
        : m_bus(bus), m_deadline(deadline), m_resolve(std::move(resolve))
    {}

    void start()
    {
        const AtspiReference registry{"org.a11y.atspi.Registry", atspi::kRootPath};
        forChildren(registry, [this](const AtspiReference& application) {
            forChildren(application, [this](const AtspiReference& window) { visitWindow(window); });
        });
    }

private:
    void ask(const AtspiReference& object, const char* method, AtspiBus::Handler handler)
    {
        if (m_isOver || ++m_asked > kMostRequests)
            return;
        ++m_open;
        m_bus.call({object, atspi::kAccessible, method}, m_deadline,
                   [self = shared_from_this(), handler = std::move(handler)](const QDBusMessage& answer) {
                       if (!self->m_isOver)
                           handler(answer);
                       if (--self->m_open == 0)
                           self->end();
                   });
    }

    void forChildren(const AtspiReference& object, std::function<void(const AtspiReference&)> action)
    {
        ask(object, "GetChildren", [action = std::move(action)](const QDBusMessage& answer) {
            auto children = referencesOf(answer);
            children.resize(std::min(children.size(), kMostChildren));
            std::ranges::for_each(children, action);
        });
    }

    void visitWindow(const AtspiReference& window)
    {
        ask(window, "GetState", [this, window](const QDBusMessage& answer) {
            if (atspi::has(statesOf(answer), State::active))
                visitChildren({window, window}, 1);
        });
    }

    void visitChildren(const FocusedNode& parent, int depth)
    {
        forChildren(parent.node, [this, window = parent.window, depth](const AtspiReference& child) {
            ask(child, "GetState", [this, node = FocusedNode{child, window}, depth](const QDBusMessage& answer) {
                visit(node, statesOf(answer), depth);
            });
        });
    }

    void visit(const FocusedNode& node, const std::vector<unsigned>& states, int depth)
    {
        const bool takesText = atspi::has(states, State::editable);
        if (atspi::has(states, State::focused) && (takesText || depth > m_depth))
            take(node, depth, takesText);
        if (atspi::has(states, State::showing) && !atspi::has(states, State::managesDescendants))
            visitChildren(node, depth + 1);
    }

    void take(const FocusedNode& node, int depth, bool takesText)
    {
        m_depth = depth;
        m_found = node;
        if (takesText) {
            end();
        } else if (!m_patience.isSet()) {
            m_patience = m_bus.clock().after(kPatience, [weak = weak_from_this()] {
                if (const auto self = weak.lock())
                    self->end();
            });
        }
    }

    void end()
    {
        if (!std::exchange(m_isOver, true))
            m_resolve(m_found);
        m_patience.reset();
    }

    AtspiBus& m_bus;
    const Instant m_deadline;
    const Found::Resolver m_resolve;
    std::optional<FocusedNode> m_found;
    int m_depth = 0; ///< of what was found
    Timer m_patience;
    int m_asked = 0;
    int m_open = 0;
    bool m_isOver = false;
};

} // namespace

Task<std::optional<FocusedNode>> findFocus(AtspiBus& bus, Instant deadline)
{
    FocusSearch::Found told;
    std::make_shared<FocusSearch>(bus, deadline, told.resolver())->start();
    const auto found = co_await told;
    co_return found.value_or(std::nullopt);
}

} // namespace vocalith
