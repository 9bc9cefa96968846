#pragma once

namespace vocalith {

/// The form of the recording overlay. The names are the stored form.
enum class RecordingDisplayStyle {
    panel, ///< a panel of its own
    notch  ///< grown out of the upper edge of the screen
};

} // namespace vocalith
