#pragma once

#include "base/Log.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace vocalith::test {

/// Keeps every log line for the test to look at.
class RecordedLog {
public:
    Logger logger(std::string category = "test") const { return m_service.logger(std::move(category)); }

    std::vector<std::string> lines() const
    {
        const std::lock_guard lock(m_mutex);
        return m_lines;
    }

    /// Whether a line contains `text`.
    bool has(std::string_view text) const
    {
        const std::lock_guard lock(m_mutex);
        return std::any_of(m_lines.begin(), m_lines.end(),
                           [text](const auto& line) { return line.find(text) != std::string::npos; });
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_lines;
    LogService m_service = LogService::toListener([this](LogLevel, std::string_view, std::string_view line) {
        const std::lock_guard lock(m_mutex);
        m_lines.emplace_back(line);
    });
};

} // namespace vocalith::test
