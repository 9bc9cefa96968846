#pragma once

#include "ports/InputSources.h"

#include <algorithm>

namespace vocalith::test {

/// Keyboard layouts of the test's choice.
class FakeInputSources final : public InputSources {
public:
    std::optional<std::string> current() const override { return active; }
    std::vector<std::string> installed() const override { return layouts; }
    bool select(const std::string& identifier) override
    {
        if (isRefusing || std::ranges::find(layouts, identifier) == layouts.end())
            return false;
        active = identifier;
        return true;
    }

    std::optional<std::string> active = "de";
    std::vector<std::string> layouts{"de", "com.apple.keylayout.US"};
    bool isRefusing = false;
};

} // namespace vocalith::test
