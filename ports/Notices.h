#pragma once

#include <string_view>

namespace vocalith {

/// Tells the user something without asking anything. Main thread; never blocks.
class Notices {
public:
    virtual ~Notices() = default;

    virtual void show(std::string_view text) = 0;
};

} // namespace vocalith
