#pragma once

#include "ports/InputSources.h"

namespace vocalith {

class X11Connection;

/// The groups of the X keyboard. A layout is known as in the keyboard's settings, with its variant: "ru", "de(dvorak)".
/// Each call is a round trip to the X server or two. Main thread.
class X11InputSources final : public InputSources {
public:
    explicit X11InputSources(X11Connection& connection) : m_connection(connection) {}

    std::optional<std::string> current() const override;
    std::vector<std::string> installed() const override;
    bool select(const std::string& identifier) override;

private:
    std::optional<unsigned> activeGroup() const;

    X11Connection& m_connection;
};

} // namespace vocalith
