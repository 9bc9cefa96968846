#include "platform/wayland/clipboard/WaylandDataDevice_p.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <wayland-client.h>
#include <wlr-data-control-unstable-v1.h>

namespace vocalith {
namespace {

constexpr std::size_t kMostTypes = 200; // each takes a pipe

/// What X11 programs behind a bridge offer beside data.
bool isData(std::string_view type)
{
    constexpr std::array<std::string_view, 5> kOther{"TARGETS", "MULTIPLE", "TIMESTAMP", "SAVE_TARGETS", "DELETE"};
    return std::ranges::find(kOther, type) == kOther.end();
}

} // namespace

struct WaylandDataDevice::Source {
    WaylandDataDevice& device;
    zwlr_data_control_source_v1* object;
    Representations representations;
    std::function<void(const std::string&)> sent;
};

struct WaylandDataDevice::Events {
    static void sourceSend(void* data, zwlr_data_control_source_v1*, const char* type, int pipe)
    {
        auto& source = *static_cast<Source*>(data);
        source.device.send(source, type, FileDescriptor(pipe));
    }

    static void sourceCancelled(void* data, zwlr_data_control_source_v1* object)
    {
        auto& device = static_cast<Source*>(data)->device;
        zwlr_data_control_source_v1_destroy(object);
        if (device.m_own == data)
            device.m_own = nullptr;
        std::erase_if(device.m_sources, [data](const auto& source) { return source.get() == data; });
    }

    static void offerType(void* data, zwlr_data_control_offer_v1* object, const char* type)
    {
        auto& types = static_cast<WaylandDataDevice*>(data)->m_offers[object];
        if (isData(type) && types.size() < kMostTypes)
            types.emplace_back(type);
    }

    static void newOffer(void* data, zwlr_data_control_device_v1*, zwlr_data_control_offer_v1* object)
    {
        static constexpr zwlr_data_control_offer_v1_listener listener{.offer = offerType};
        static_cast<WaylandDataDevice*>(data)->m_offers[object];
        zwlr_data_control_offer_v1_add_listener(object, &listener, data);
    }

    static void selection(void* data, zwlr_data_control_device_v1*, zwlr_data_control_offer_v1* object)
    {
        auto& device = *static_cast<WaylandDataDevice*>(data);
        device.dropOffer(std::exchange(device.m_selection, object));
        if (std::exchange(device.m_isKnown, true)) // the first one says how things are
            device.changed.emit();
    }

    static void primarySelection(void* data, zwlr_data_control_device_v1*, zwlr_data_control_offer_v1* object)
    {
        static_cast<WaylandDataDevice*>(data)->dropOffer(object);
    }

    static void finished(void* data, zwlr_data_control_device_v1* object)
    {
        auto& device = *static_cast<WaylandDataDevice*>(data);
        device.m_logger.error("The compositor has taken the clipboard away");
        zwlr_data_control_device_v1_destroy(object);
        device.m_device = nullptr;
    }
};

WaylandDataDevice::WaylandDataDevice(WaylandConnection& connection, Logger logger)
    : m_connection(connection), m_logger(std::move(logger)),
      m_manager(connection.bind<zwlr_data_control_manager_v1>(zwlr_data_control_manager_v1_interface, 2))
{
    static constexpr zwlr_data_control_device_v1_listener listener{.data_offer = Events::newOffer,
                                                                   .selection = Events::selection,
                                                                   .finished = Events::finished,
                                                                   .primary_selection = Events::primarySelection};
    if (!m_manager || !connection.seat())
        return;
    m_device = zwlr_data_control_manager_v1_get_data_device(m_manager, connection.seat());
    zwlr_data_control_device_v1_add_listener(m_device, &listener, this);
    connection.flush();
}

WaylandDataDevice::~WaylandDataDevice()
{
    for (const auto& source : m_sources)
        zwlr_data_control_source_v1_destroy(source->object);
    for (const auto& [offer, types] : m_offers)
        zwlr_data_control_offer_v1_destroy(offer);
    if (m_device)
        zwlr_data_control_device_v1_destroy(m_device);
    if (m_manager)
        zwlr_data_control_manager_v1_destroy(m_manager);
    m_connection.flush();
}

void WaylandDataDevice::dropOffer(zwlr_data_control_offer_v1* object)
{
    if (m_offers.erase(object) > 0)
        zwlr_data_control_offer_v1_destroy(object);
}

std::vector<PipeSource> WaylandDataDevice::request()
{
    std::vector<PipeSource> sources;
    const auto offer = m_offers.find(m_selection);
    if (offer == m_offers.end())
        return sources;
    for (const auto& type : offer->second) {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) {
            m_logger.error(fmt::format("No pipe for the clipboard: {}", std::strerror(errno)));
            sources.push_back({type, FileDescriptor()}); // which fails, so that nobody takes the rest for all
            break;
        }
        sources.push_back({type, FileDescriptor(ends[0])});
        const FileDescriptor writing(ends[1]); // the request sends a copy of it
        zwlr_data_control_offer_v1_receive(offer->first, type.c_str(), writing.get());
        m_connection.flush();
    }
    return sources;
}

const WaylandDataDevice::Representations* WaylandDataDevice::own() const
{
    return m_own ? &m_own->representations : nullptr;
}

void WaylandDataDevice::offer(Representations representations, std::function<void(const std::string&)> sent)
{
    static constexpr zwlr_data_control_source_v1_listener listener{.send = Events::sourceSend,
                                                                   .cancelled = Events::sourceCancelled};
    auto& source = m_sources.emplace_back(
        std::make_unique<Source>(Source{*this, zwlr_data_control_manager_v1_create_data_source(m_manager),
                                        std::move(representations), std::move(sent)}));
    zwlr_data_control_source_v1_add_listener(source->object, &listener, source.get());
    for (const auto& representation : source->representations)
        zwlr_data_control_source_v1_offer(source->object, representation.type.c_str());
    zwlr_data_control_device_v1_set_selection(m_device, source->object);
    m_own = source.get();
    m_connection.flush();
}

void WaylandDataDevice::clear()
{
    zwlr_data_control_device_v1_set_selection(m_device, nullptr);
    m_connection.flush();
}

void WaylandDataDevice::send(Source& source, const std::string& type, FileDescriptor pipe)
{
    const auto found = std::ranges::find(source.representations, type, &PasteboardSnapshot::Representation::type);
    if (found == source.representations.end())
        return;
    m_writer.write(std::move(pipe), found->payload, [sent = source.sent, type](bool isComplete) {
        if (isComplete)
            sent(type);
    });
}

} // namespace vocalith
