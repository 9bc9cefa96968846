#pragma once

#include <cstdint>
#include <vector>

namespace vocalith {

/// A byte buffer; base64 in JSON.
using Data = std::vector<std::uint8_t>;

} // namespace vocalith
