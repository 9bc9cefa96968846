#pragma once

#include "base/Observable.h"

namespace vocalith {

/// Whether the screen of the desktop session is locked: nobody whom the desktop knows is there. Main thread.
class ScreenLock {
public:
    virtual ~ScreenLock() = default;

    /// False also where the desktop does not say.
    Observable<bool> isLocked{false};
};

} // namespace vocalith
