#pragma once

#include "app/cli/shortcuts/ShortcutsOptions.h"
#include "base/Result.h"
#include "base/Uuid.h"

#include <vector>

namespace vocalith {

class PersistentAppStorage;
class Terminal;

/// `vocalith shortcuts`: shows and changes the shortcuts by the same rules as the window that records them. A running
/// program takes the change at once.
class ShortcutsCommand {
public:
    ShortcutsCommand(PersistentAppStorage& appStorage, Terminal& terminal)
        : m_appStorage(appStorage), m_terminal(terminal)
    {}

    /// Yields the exit code.
    int run(const ShortcutsOptions& options);

private:
    struct Named {
        std::string name;
        KeyboardShortcut shortcut;
    };

    int run(const ShortcutsListOptions& options);
    int run(const ShortcutsSetOptions& options);
    int run(const ShortcutsClearOptions& options);
    std::vector<Named> all() const;
    Result<Named, std::string> find(const std::string& which) const;
    int complain(const std::string& text);
    int stored(const std::string& name);

    PersistentAppStorage& m_appStorage;
    Terminal& m_terminal;
};

} // namespace vocalith
