#pragma once

#include "ports/InputSources.h"

namespace vocalith {

/// No Wayland protocol says which layout is active or lets a program choose one. Nothing is lost by that: the keys that
/// are posted come from a keyboard with a keymap of our own.
class WaylandInputSources final : public InputSources {
public:
    std::optional<std::string> current() const override { return std::nullopt; }
    std::vector<std::string> installed() const override { return {}; }
    bool select(const std::string&) override { return false; }
};

} // namespace vocalith
