#include "platform/x11/windows/X11Compositing.h"

#include "platform/x11/X11Connection.h"

#include <X11/Xlib.h>

namespace vocalith {

bool isComposited(X11Connection& connection)
{
    return !connection.isLost() && XGetSelectionOwner(connection.display(), connection.atom("_NET_WM_CM_S0")) != None;
}

} // namespace vocalith
