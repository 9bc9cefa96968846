#pragma once

#include "tests/support/SessionBus.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vocalith::test {

/// Stands in for the desktop's portals and its user, on a private bus. It answers as the real ones do, and can be told
/// to be older, to lack something or to say no. Needs the main thread's event loop.
class FakePortal {
public:
    struct Desktop {
        bool hasShortcuts = true;
        bool hasRemoteDesktop = true;
        bool hasClipboard = true;
        bool hasRegistry = true;          ///< since 1.20
        bool insistsOnIdentifier = false; ///< since 1.21: refuses those who have not registered
        bool wrapsTypes = false;          ///< as GNOME does with the types of the clipboard
        bool saysNo = false;              ///< the user declines whatever is asked
        int refusedKeys = 0;              ///< of the first that are pressed
        bool neverAnswers = false;        ///< the user has gone for a coffee
    };
    struct Shortcut {
        std::string id;
        std::string description;
        std::string trigger;
        bool operator==(const Shortcut&) const = default;
    };

    explicit FakePortal(Desktop desktop);
    FakePortal() : FakePortal(Desktop()) {}
    ~FakePortal();

    const std::string& address() const { return m_bus.address(); } ///< of the bus
    /// What was called, in order: "GlobalShortcuts.CreateSession".
    const std::vector<std::string>& calls() const;
    int count(const std::string& call) const;
    const std::string& applicationID() const;
    /// What the session that is open was made for.
    const std::vector<Shortcut>& shortcuts() const;
    int openSessions() const;
    /// How often the user was asked about remote control.
    int questions() const;
    /// What the focused application was given: "keysym 118 down".
    const std::vector<std::string>& keys() const;

    void press(const std::string& shortcut);
    void release(const std::string& shortcut);
    void chooseTrigger(const std::string& shortcut, const std::string& description);
    void endSessions(); ///< as the user does in the desktop's settings
    void leaveBus();    ///< as when it crashes

    /// Another program copies.
    void copy(std::map<std::string, std::string> content);
    void stopAnswering(); ///< the other program, when it is asked for what it has copied
    /// Another program pastes what ours has; the bytes arrive with time, and whether all did is told at the end.
    struct Pasted {
        std::string bytes;
        bool isDone = false;
        bool isSuccess = false;
    };
    std::shared_ptr<Pasted> paste(const std::string& type);
    /// What our program offers; empty when it is not the owner.
    std::vector<std::string> offered() const;

private:
    class Service;

    SessionBus m_bus;
    std::unique_ptr<Service> m_service;
};

} // namespace vocalith::test
