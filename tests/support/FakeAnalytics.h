#pragma once

#include "ports/Analytics.h"

#include <string>
#include <vector>

namespace vocalith::test {

/// Keeps the names of the events in their order.
class FakeAnalytics final : public Analytics {
public:
    void event(std::string_view name) override { m_names.emplace_back(name); }

    const std::vector<std::string>& names() const { return m_names; }

private:
    std::vector<std::string> m_names;
};

} // namespace vocalith::test
