#pragma once

#include <string_view>

namespace vocalith {

/// Counts what happens in the program under fixed event names. Main thread.
class Analytics {
public:
    virtual ~Analytics() = default;

    virtual void event(std::string_view name) = 0;
};

} // namespace vocalith
