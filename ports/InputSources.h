#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vocalith {

/// The keyboard layouts between which the user can switch. Main thread; no call waits.
///
/// A layout is known by its identifier: "com.apple.keylayout.US" for the plain US one, and for all others the name that
/// the desktop has for it.
class InputSources {
public:
    virtual ~InputSources() = default;

    /// Nothing where the desktop does not say.
    virtual std::optional<std::string> current() const = 0;
    virtual std::vector<std::string> installed() const = 0;
    /// Yields whether it is active now.
    virtual bool select(const std::string& identifier) = 0;
};

} // namespace vocalith
