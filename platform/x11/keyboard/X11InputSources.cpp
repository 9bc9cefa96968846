#include "platform/x11/keyboard/X11InputSources.h"

#include "platform/x11/X11Connection.h"
#include "platform/x11/windows/X11Windows_p.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>

#include <algorithm>
#include <memory>
#include <string_view>

namespace vocalith {
namespace {

constexpr const char* kPlainUS = "com.apple.keylayout.US";

struct KeyboardFreed {
    void operator()(XkbDescPtr keyboard) const { XkbFreeKeyboard(keyboard, 0, True); }
};
using Keyboard = std::unique_ptr<XkbDescRec, KeyboardFreed>;

std::vector<std::string> parts(std::string_view list)
{
    std::vector<std::string> found;
    while (!list.empty()) {
        const auto end = list.find(',');
        found.emplace_back(list.substr(0, end));
        list = end == std::string_view::npos ? std::string_view() : list.substr(end + 1);
    }
    return found;
}

std::string identifier(const std::string& layout, const std::string& variant)
{
    if (layout == "us" && variant.empty())
        return kPlainUS;
    return variant.empty() ? layout : layout + "(" + variant + ")";
}

/// As the keyboard was set up; empty where nobody says.
std::vector<std::string> namesFromSettings(X11Connection& connection)
{
    enum Setting : std::size_t { rules, model, layout, variant, options, count };
    auto settings = X11Windows(connection).texts(connection.root(), "_XKB_RULES_NAMES");
    settings.resize(Setting::count);
    const auto layouts = parts(settings[Setting::layout]);
    auto variants = parts(settings[Setting::variant]);
    variants.resize(layouts.size());
    std::vector<std::string> names;
    for (std::size_t group = 0; group < layouts.size(); ++group)
        names.push_back(identifier(layouts[group], variants[group]));
    return names;
}

} // namespace

std::vector<std::string> X11InputSources::installed() const
{
    auto* const display = m_connection.display();
    const Keyboard keyboard(XkbGetMap(display, XkbKeySymsMask, XkbUseCoreKbd));
    if (!keyboard || XkbGetControls(display, XkbGroupsWrapMask, keyboard.get()) != Success ||
        XkbGetNames(display, XkbGroupNamesMask, keyboard.get()) != Success)
        return {};
    const std::size_t groups = keyboard->ctrls->num_groups;
    auto names = namesFromSettings(m_connection);
    // A keyboard that was changed by hand does not have what the settings say.
    for (std::size_t group = names.size(); group < groups; ++group) {
        const auto name = m_connection.atomName(keyboard->names->groups[group]);
        names.push_back(name == "English (US)" ? kPlainUS : name);
    }
    names.resize(groups);
    return names;
}

std::optional<unsigned> X11InputSources::activeGroup() const
{
    XkbStateRec state{};
    if (XkbGetState(m_connection.display(), XkbUseCoreKbd, &state) != Success || m_connection.isLost())
        return std::nullopt;
    return state.group;
}

std::optional<std::string> X11InputSources::current() const
{
    const auto names = installed();
    const auto group = activeGroup();
    if (!group || *group >= names.size())
        return std::nullopt;
    return names[*group];
}

bool X11InputSources::select(const std::string& identifier)
{
    const auto names = installed();
    const auto found = std::ranges::find(names, identifier);
    if (found == names.end())
        return false;
    const auto wanted = static_cast<unsigned>(found - names.begin());
    XkbLockGroup(m_connection.display(), XkbUseCoreKbd, wanted);
    // The answer also means that keys which another connection posts from now on come under this layout.
    return activeGroup() == wanted;
}

} // namespace vocalith
