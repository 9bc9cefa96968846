#pragma once

#include "ports/RunningInstance.h"

#include <memory>

namespace vocalith {

/// The running instance under a name of its own on the session bus. It serves the interface of that name (Start,
/// Stop, Toggle, Cancel, Open) and org.freedesktop.Application of the Desktop Entry Specification 1.5, by which a
/// desktop starts it and opens links.
class DBusInstance final : public RunningInstance {
public:
    DBusInstance();
    ~DBusInstance() override;

    Task<Result<void, InstanceError>> claim(Handler handler) override;
    Task<Result<void, InstanceError>> ask(InstanceRequest request) override;

private:
    class Service;
    std::unique_ptr<Service> m_service;
};

} // namespace vocalith
