#pragma once

#include "tests/support/XDisplay.h"

namespace vocalith::test {

/// The display that this program's windows are on.
XDisplay& display();

} // namespace vocalith::test
