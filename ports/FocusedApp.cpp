#include "ports/FocusedApp.h"

#include "base/Text.h"

#include <algorithm>
#include <array>

namespace vocalith {
namespace {

// By window class or the last part of the application's identifier, in lower case.
constexpr std::array<std::string_view, 36> kTerminals{
    "alacritty",
    "blackbox",
    "console",
    "contour",
    "cool-retro-term",
    "deepin-terminal",
    "foot",
    "footclient",
    "ghostty",
    "gnome-terminal",
    "gnome-terminal-server",
    "guake",
    "hyper",
    "kgx",
    "kitty",
    "konsole",
    "lxterminal",
    "mate-terminal",
    "mlterm",
    "pantheon-terminal",
    "ptyxis",
    "qterminal",
    "rio",
    "rxvt",
    "st",
    "st-256color",
    "terminal",
    "terminator",
    "terminology",
    "tilda",
    "tilix",
    "urxvt",
    "wezterm",
    "wezterm-gui",
    "xfce4-terminal",
    "xterm",
};

} // namespace

bool isTerminalEmulator(std::string_view identifier)
{
    const std::string name = asciiLowerCase(identifier);
    const std::string_view last = std::string_view(name).substr(name.rfind('.') + 1);
    return std::ranges::find(kTerminals, std::string_view(name)) != kTerminals.end() ||
           std::ranges::find(kTerminals, last) != kTerminals.end();
}

} // namespace vocalith
