#pragma once

#include "base/Task.h"
#include "platform/atspi/AtspiBus_p.h"

#include <memory>
#include <optional>

namespace vocalith {

struct FocusedNode {
    AtspiReference node;
    AtspiReference window; ///< that it is in
};

/// Looks for the object with the keyboard focus, in all applications at once: one that hangs does not keep the others
/// from answering. Yields nothing when none has it, or none has said so by `deadline`.
Task<std::optional<FocusedNode>> findFocus(AtspiBus& bus, Instant deadline);

} // namespace vocalith
