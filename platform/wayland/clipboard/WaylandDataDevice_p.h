#pragma once

#include "base/Log.h"
#include "base/pipes/PipeReader.h"
#include "base/pipes/PipeWriter.h"
#include "platform/wayland/WaylandConnection.h"
#include "ports/Pasteboard.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct zwlr_data_control_manager_v1;
struct zwlr_data_control_device_v1;
struct zwlr_data_control_offer_v1;
struct zwlr_data_control_source_v1;

namespace vocalith {

/// The seat's selection, as the protocol has it: what others offer, and what is offered to them. It belongs to a
/// WaylandPasteboard.
class WaylandDataDevice {
public:
    using Representations = std::vector<PasteboardSnapshot::Representation>;

    WaylandDataDevice(WaylandConnection& connection, Logger logger);
    ~WaylandDataDevice();
    WaylandDataDevice(const WaylandDataDevice&) = delete;
    WaylandDataDevice& operator=(const WaylandDataDevice&) = delete;

    bool isUsable() const { return m_device && !m_connection.isLost(); }
    /// The pipes through which the owner of the selection is about to give all types of it.
    std::vector<PipeSource> request();
    /// What this program offers, while it owns the selection; else null.
    const Representations* own() const;
    /// Becomes the owner; `sent` is called for each type that a reader has taken whole.
    void offer(Representations representations, std::function<void(const std::string& type)> sent);
    void clear();

    Signal<> changed;

private:
    struct Source;
    struct Events;

    void dropOffer(zwlr_data_control_offer_v1* object);
    void send(Source& source, const std::string& type, FileDescriptor pipe);

    WaylandConnection& m_connection;
    const Logger m_logger;
    zwlr_data_control_manager_v1* m_manager = nullptr;
    zwlr_data_control_device_v1* m_device = nullptr;
    std::map<zwlr_data_control_offer_v1*, std::vector<std::string>> m_offers; ///< with their types
    zwlr_data_control_offer_v1* m_selection = nullptr;
    bool m_isKnown = false;                         ///< whether the compositor has told what is selected
    std::vector<std::unique_ptr<Source>> m_sources; ///< those that the compositor has not given back
    Source* m_own = nullptr;
    PipeWriter m_writer;
};

} // namespace vocalith
