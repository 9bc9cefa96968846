#pragma once

#include <algorithm>
#include <vector>

namespace vocalith::bench {

/// The one in the middle of at least one value; the upper of two.
template <class T>
T median(std::vector<T> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

} // namespace vocalith::bench
