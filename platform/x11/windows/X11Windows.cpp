#include "platform/x11/windows/X11Windows_p.h"

#include "platform/x11/X11Connection.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XRes.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

#include <unistd.h>

namespace vocalith {
namespace {

constexpr const char* kOwnWindow = "_VOCALITH_PROCESS"; ///< holds the process id
constexpr long kLongestProperty = 4096;                 ///< in units of four bytes

struct Freed {
    void operator()(void* data) const { XFree(data); }
};

struct Property {
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    std::unique_ptr<unsigned char, Freed> data;
};

Property read(X11Connection& connection, Window window, const std::string& name)
{
    Property property;
    unsigned char* data = nullptr;
    unsigned long rest = 0;
    if (XGetWindowProperty(connection.display(), window, connection.atom(name), 0, kLongestProperty, False,
                           AnyPropertyType, &property.type, &property.format, &property.count, &rest, &data) != Success)
        return {};
    property.data.reset(data);
    return property;
}

std::string string(const Property& property)
{
    return property.format == 8 ? std::string(reinterpret_cast<const char*>(property.data.get()), property.count)
                                : std::string();
}

std::vector<unsigned long> numbers(const Property& property)
{
    if (property.format != 32)
        return {};
    const auto* const first = reinterpret_cast<const unsigned long*>(property.data.get());
    return {first, first + property.count};
}

Window parentOf(Display* display, Window window)
{
    Window root = None;
    Window parent = None;
    Window* children = nullptr;
    unsigned int count = 0;
    if (XQueryTree(display, window, &root, &parent, &children, &count) == 0)
        return None;
    XFree(children);
    return parent == root ? None : parent;
}

} // namespace

unsigned long X11Windows::inputFocus()
{
    Window window = None;
    int revert = 0;
    XGetInputFocus(m_connection.display(), &window, &revert);
    return m_connection.isLost() || window == PointerRoot ? None : window;
}

bool X11Windows::hasNoFocus()
{
    int code = 0;
    int event = 0;
    int error = 0;
    Window window = PointerRoot;
    int revert = 0;
    XGetInputFocus(m_connection.display(), &window, &revert);
    return window == None && !m_connection.isLost() &&
           !XQueryExtension(m_connection.display(), "XWAYLAND", &code, &event, &error);
}

void X11Windows::markAsOwn(unsigned long window)
{
    const long id = ::getpid();
    XChangeProperty(m_connection.display(), window, m_connection.atom(kOwnWindow), XA_CARDINAL, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&id), 1);
}

bool X11Windows::isOwnSelection(unsigned long selection)
{
    const auto owner = XGetSelectionOwner(m_connection.display(), selection);
    return owner != None && numbers(owner, kOwnWindow) == std::vector{static_cast<unsigned long>(::getpid())};
}

unsigned long X11Windows::active()
{
    if (const auto said = numbers(m_connection.root(), "_NET_ACTIVE_WINDOW"); !said.empty() && said[0] != None)
        return said[0];
    const auto focus = inputFocus();
    return focus == None ? None : topLevel(focus);
}

unsigned long X11Windows::topLevel(unsigned long window)
{
    X11ErrorTrap trap(m_connection);
    Window named = window;
    for (Window around = window; around != None; around = parentOf(m_connection.display(), around)) {
        if (read(m_connection, around, "WM_STATE").type != None)
            return around;
        if (read(m_connection, around, "WM_CLASS").type != None)
            named = around;
    }
    return named;
}

std::string X11Windows::windowClass(unsigned long window)
{
    const auto instanceAndClass = texts(window, "WM_CLASS");
    return instanceAndClass.size() < 2 ? std::string() : instanceAndClass[1];
}

std::string X11Windows::focusedClass()
{
    X11ErrorTrap trap(m_connection);
    Window around = inputFocus();
    std::string name;
    while (around != None && (name = windowClass(around)).empty())
        around = parentOf(m_connection.display(), around);
    return name;
}

std::string X11Windows::title(unsigned long window)
{
    X11ErrorTrap trap(m_connection);
    if (auto name = string(read(m_connection, window, "_NET_WM_NAME")); !name.empty())
        return name;
    XTextProperty old{};
    if (XGetWMName(m_connection.display(), window, &old) == 0)
        return {};
    const std::unique_ptr<unsigned char, Freed> value(old.value);
    char** list = nullptr;
    int count = 0;
    std::string name;
    if (Xutf8TextPropertyToTextList(m_connection.display(), &old, &list, &count) >= Success && count > 0)
        name = list[0];
    XFreeStringList(list);
    return name;
}

std::string X11Windows::text(unsigned long window, const std::string& property)
{
    const auto all = texts(window, property);
    return all.empty() ? std::string() : all[0];
}

std::vector<std::string> X11Windows::texts(unsigned long window, const std::string& property)
{
    X11ErrorTrap trap(m_connection);
    const auto value = string(read(m_connection, window, property));
    std::vector<std::string> parts;
    for (std::size_t at = 0; at < value.size(); at += parts.back().size() + 1)
        parts.push_back(value.substr(at, value.find('\0', at) - at));
    return parts;
}

std::vector<unsigned long> X11Windows::numbers(unsigned long window, const std::string& property)
{
    X11ErrorTrap trap(m_connection);
    return vocalith::numbers(read(m_connection, window, property));
}

int X11Windows::processId(unsigned long window)
{
    X11ErrorTrap trap(m_connection);
    XResClientIdSpec asked{window, XRES_CLIENT_ID_PID_MASK};
    long count = 0;
    XResClientIdValue* values = nullptr;
    if (XResQueryClientIds(m_connection.display(), 1, &asked, &count, &values) != Success)
        return 0;
    int id = 0;
    for (long index = 0; index < count; ++index) {
        if (XResGetClientIdType(&values[index]) == XRES_CLIENT_ID_PID)
            id = static_cast<int>(XResGetClientPid(&values[index]));
    }
    XResClientIdsDestroy(count, values);
    return std::max(id, 0);
}

std::optional<ScreenRectangle> X11Windows::rectangle(unsigned long window)
{
    X11ErrorTrap trap(m_connection);
    XWindowAttributes attributes{};
    ScreenRectangle rectangle;
    Window child = None;
    if (XGetWindowAttributes(m_connection.display(), window, &attributes) == 0 ||
        !XTranslateCoordinates(m_connection.display(), window, m_connection.root(), 0, 0, &rectangle.x, &rectangle.y,
                               &child))
        return std::nullopt;
    rectangle.width = attributes.width;
    rectangle.height = attributes.height;
    return rectangle;
}

bool pastesFromPrimary(const std::string& windowClass)
{
    constexpr std::array<std::string_view, 4> kClasses{"XTerm", "UXTerm", "URxvt", "Rxvt"};
    return std::ranges::find(kClasses, windowClass) != kClasses.end();
}

} // namespace vocalith
