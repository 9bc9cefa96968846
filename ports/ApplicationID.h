#pragma once

namespace vocalith {

/// What the desktop knows the program by: the identifier of its desktop entry (Desktop Entry Specification) and icon,
/// and its name on the session bus.
inline constexpr const char* kApplicationID = "org.vocalith.Vocalith";

} // namespace vocalith
