#pragma once

#include "ports/ScreenLock.h"

namespace vocalith::test {

class FakeScreenLock final : public ScreenLock {};

} // namespace vocalith::test
