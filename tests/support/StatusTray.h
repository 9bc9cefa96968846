#pragma once

#include "tests/support/SessionBus.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

class QDBusMessage;

namespace vocalith::test {

/// The part of a desktop that keeps the status icons (StatusNotifierItem), and a user of the menu
/// (com.canonical.dbusmenu) of the icon that came last. Needs the main thread's event loop.
class StatusTray {
public:
    struct Entry {
        int id = 0;
        std::string title;
        bool isEnabled = true;
    };

    explicit StatusTray(const std::string& busAddress);
    ~StatusTray();

    /// How many have come until now.
    std::size_t icons() const;
    /// Every entry, also those of the lower menus; absent when the icon has gone.
    std::optional<std::vector<Entry>> menu() const;
    std::vector<std::string> titles() const;
    bool isEnabled(const std::string& title) const;
    /// The test fails where there is no such entry.
    void click(const std::string& title) const;

private:
    QDBusMessage ask(const QString& member, const QVariantList& arguments) const;

    std::unique_ptr<QDBusConnection> m_desktop;
    BusService m_service;
};

} // namespace vocalith::test
