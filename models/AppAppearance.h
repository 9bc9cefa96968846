#pragma once

namespace vocalith {

/// The colours of the windows. The names are the stored form.
enum class AppAppearance {
    system, ///< as the desktop says
    light,
    dark
};

} // namespace vocalith
