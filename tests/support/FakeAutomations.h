#pragma once

#include "ports/Automations.h"

#include <algorithm>
#include <string>
#include <vector>

namespace vocalith::test {

/// Has the automations that it was given, and notes which were run.
class FakeAutomations final : public Automations {
public:
    explicit FakeAutomations(std::vector<std::string> names = {}) : m_names(std::move(names)) {}

    std::vector<std::string> names() const override { return m_names; }
    Task<Result<void, AutomationError>> run(std::string name) override
    {
        m_asked.push_back(name);
        if (std::ranges::find(m_names, name) == m_names.end())
            co_return failure(
                AutomationError{AutomationError::Kind::notFound, "There is no automation \"" + name + "\"."});
        co_return Result<void, AutomationError>();
    }

    const std::vector<std::string>& asked() const { return m_asked; }

private:
    std::vector<std::string> m_names;
    std::vector<std::string> m_asked;
};

} // namespace vocalith::test
