#pragma once

namespace vocalith {

class X11Connection;

/// Whether a compositing manager runs on the first screen now, by the selection that it owns after the EWMH
/// (_NET_WM_CM_S0). One round trip.
bool isComposited(X11Connection& connection);

} // namespace vocalith
