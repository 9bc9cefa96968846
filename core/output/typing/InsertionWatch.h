#pragma once

#include "base/Clock.h"
#include "base/Task.h"

#include <chrono>
#include <string>

namespace vocalith {

class Accessibility;

/// Watches for the moment at which the focused application shows what was inserted: one that has read the clipboard is
/// not done with it, and handles a key that is posted at once before the text. Part of the output, main thread.
class InsertionWatch {
public:
    /// Before the first look and between two; all there is where nothing can be seen.
    static constexpr std::chrono::milliseconds kPause{50};
    /// An application that shows the text differently, or elsewhere than before the caret, costs this and not more.
    static constexpr std::chrono::milliseconds kLimit{500};

    InsertionWatch(Accessibility& accessibility, Clock& clock) : m_accessibility(accessibility), m_clock(clock) {}

    /// Ends when the end of the text stands before the caret. Not where that cannot be told: then after the first
    /// pause. A stop ends it, too. A text that stood there already, word for word, is taken for the new one.
    Task<void> untilShown(std::string text);

private:
    Accessibility& m_accessibility;
    Clock& m_clock;
};

} // namespace vocalith
