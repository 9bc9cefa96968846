#pragma once

#include "ports/Notices.h"

#include <string>
#include <string_view>
#include <vector>

namespace vocalith::test {

/// Keeps what the user was told.
class RecordedNotices final : public Notices {
public:
    void show(std::string_view text) override { shown.emplace_back(text); }
    std::vector<std::string> shown;
};

} // namespace vocalith::test
