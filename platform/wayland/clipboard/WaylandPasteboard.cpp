#include "platform/wayland/clipboard/WaylandPasteboard.h"

#include "platform/wayland/clipboard/WaylandDataDevice_p.h"

#include <algorithm>
#include <array>

namespace vocalith {
namespace {

using Kind = PasteboardError::Kind;
using Item = PasteboardSnapshot::Item;

// What clipboard managers ask for before they keep a copy.
constexpr const char* kTransientMark = "x-kde-passwordManagerHint";
constexpr const char* kTransientValue = "secret";
constexpr std::array kTextTypes{"text/plain;charset=utf-8", "text/plain", "UTF8_STRING", "STRING", "TEXT"};

PasteboardError unavailable()
{
    return {Kind::unavailable, "The compositor does not let programs use it."};
}

} // namespace

struct WaylandPasteboard::Device {
    Device(WaylandConnection& from, Clock& time, Logger logger)
        : connection(from), clock(time), data(connection, std::move(logger))
    {}

    Task<Result<void, PasteboardError>> settled(StopToken stop)
    {
        const bool isSettled = co_await connection.synchronized();
        if (stop.stop_requested())
            co_return failure(PasteboardError{Kind::cancelled});
        if (!isSettled || !data.isUsable())
            co_return failure(unavailable());
        co_return Result<void, PasteboardError>();
    }

    WaylandConnection& connection;
    Clock& clock;
    WaylandDataDevice data;
    std::int64_t changeCount = 0;
    Subscription onChange;
};

bool WaylandPasteboard::isOffered(const WaylandConnection& connection)
{
    return connection.seat() && connection.offers("zwlr_data_control_manager_v1");
}

WaylandPasteboard::WaylandPasteboard(WaylandConnection& connection, Clock& clock, Logger logger)
    : m_device(std::make_unique<Device>(connection, clock, std::move(logger)))
{
    m_device->onChange = m_device->data.changed.subscribe([this] {
        ++m_device->changeCount;
        changed.emit();
    });
}

WaylandPasteboard::~WaylandPasteboard() = default;

std::int64_t WaylandPasteboard::changeCount() const
{
    return m_device->changeCount;
}

Task<Result<PasteboardSnapshot, PasteboardError>> WaylandPasteboard::snapshot()
{
    const auto stop = co_await currentStopToken();
    const auto settled = co_await m_device->settled(stop);
    if (!settled)
        co_return failure(settled.error());
    PasteboardSnapshot snapshot;
    if (const auto* const own = m_device->data.own()) {
        snapshot.items.push_back({*own});
        co_return snapshot;
    }
    auto sources = m_device->data.request();
    auto contents = co_await readPipes(m_device->clock, std::move(sources));
    if (contents.isCancelled)
        co_return failure(PasteboardError{Kind::cancelled});
    snapshot.isComplete = contents.isComplete;
    Item item;
    for (auto& [type, bytes] : contents.ended)
        item.representations.push_back({std::move(type), std::move(bytes)});
    if (!item.representations.empty())
        snapshot.items.push_back(std::move(item));
    co_return snapshot;
}

Task<Result<void, PasteboardError>> WaylandPasteboard::writeText(std::string text, bool isTransient)
{
    const auto stop = co_await currentStopToken();
    if (!m_device->data.isUsable())
        co_return failure(unavailable());
    const auto payload = std::make_shared<const std::string>(std::move(text));
    WaylandDataDevice::Representations representations;
    for (const auto* type : kTextTypes)
        representations.push_back({type, payload});
    if (isTransient)
        representations.push_back({kTransientMark, std::make_shared<const std::string>(kTransientValue)});
    std::function<void(const std::string&)> sent = [this](const std::string& type) {
        if (type != kTransientMark)
            fetched.emit({PasteboardFetch::Reader::unknown, type});
    };
    m_device->data.offer(std::move(representations), std::move(sent));
    co_return co_await m_device->settled(stop);
}

Task<Result<void, PasteboardError>> WaylandPasteboard::restore(PasteboardSnapshot snapshot)
{
    const auto stop = co_await currentStopToken();
    if (!m_device->data.isUsable())
        co_return failure(unavailable());
    // The protocol knows one item; the first one that has a type is what programs would have read.
    WaylandDataDevice::Representations representations;
    for (auto& item : snapshot.items) {
        for (auto& representation : item.representations) {
            const auto& type = representation.type;
            const bool isNew = std::ranges::find(representations, type, &PasteboardSnapshot::Representation::type) ==
                               representations.end();
            if (isNew)
                representations.push_back(std::move(representation));
        }
    }
    std::function<void(const std::string&)> sent = [](const std::string&) {};
    if (representations.empty())
        m_device->data.clear();
    else
        m_device->data.offer(std::move(representations), std::move(sent));
    co_return co_await m_device->settled(stop);
}

} // namespace vocalith
