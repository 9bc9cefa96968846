#include "models/VirtualKeyCode.h"

#include "models/ModifierFlags.h"

#include <algorithm>
#include <array>
#include <linux/input-event-codes.h>

namespace vocalith {
namespace {

struct Place {
    int virtualKeyCode;
    int inputEventCode;
};

constexpr std::array kPlaces{
    Place{0, KEY_A},         Place{1, KEY_S},           Place{2, KEY_D},           Place{3, KEY_F},
    Place{4, KEY_H},         Place{5, KEY_G},           Place{6, KEY_Z},           Place{7, KEY_X},
    Place{8, KEY_C},         Place{9, KEY_V},           Place{10, KEY_102ND},      Place{11, KEY_B},
    Place{12, KEY_Q},        Place{13, KEY_W},          Place{14, KEY_E},          Place{15, KEY_R},
    Place{16, KEY_Y},        Place{17, KEY_T},          Place{18, KEY_1},          Place{19, KEY_2},
    Place{20, KEY_3},        Place{21, KEY_4},          Place{22, KEY_6},          Place{23, KEY_5},
    Place{24, KEY_EQUAL},    Place{25, KEY_9},          Place{26, KEY_7},          Place{27, KEY_MINUS},
    Place{28, KEY_8},        Place{29, KEY_0},          Place{30, KEY_RIGHTBRACE}, Place{31, KEY_O},
    Place{32, KEY_U},        Place{33, KEY_LEFTBRACE},  Place{34, KEY_I},          Place{35, KEY_P},
    Place{36, KEY_ENTER},    Place{37, KEY_L},          Place{38, KEY_J},          Place{39, KEY_APOSTROPHE},
    Place{40, KEY_K},        Place{41, KEY_SEMICOLON},  Place{42, KEY_BACKSLASH},  Place{43, KEY_COMMA},
    Place{44, KEY_SLASH},    Place{45, KEY_N},          Place{46, KEY_M},          Place{47, KEY_DOT},
    Place{48, KEY_TAB},      Place{49, KEY_SPACE},      Place{50, KEY_GRAVE},      Place{51, KEY_BACKSPACE},
    Place{53, KEY_ESC},      Place{54, KEY_RIGHTMETA},  Place{55, KEY_LEFTMETA},   Place{56, KEY_LEFTSHIFT},
    Place{57, KEY_CAPSLOCK}, Place{58, KEY_LEFTALT},    Place{59, KEY_LEFTCTRL},   Place{60, KEY_RIGHTSHIFT},
    Place{61, KEY_RIGHTALT}, Place{62, KEY_RIGHTCTRL},  Place{63, KEY_FN},         Place{64, KEY_F17},
    Place{65, KEY_KPDOT},    Place{67, KEY_KPASTERISK}, Place{69, KEY_KPPLUS},     Place{71, KEY_NUMLOCK},
    Place{72, KEY_VOLUMEUP}, Place{73, KEY_VOLUMEDOWN}, Place{74, KEY_MUTE},       Place{75, KEY_KPSLASH},
    Place{76, KEY_KPENTER},  Place{78, KEY_KPMINUS},    Place{79, KEY_F18},        Place{80, KEY_F19},
    Place{81, KEY_KPEQUAL},  Place{82, KEY_KP0},        Place{83, KEY_KP1},        Place{84, KEY_KP2},
    Place{85, KEY_KP3},      Place{86, KEY_KP4},        Place{87, KEY_KP5},        Place{88, KEY_KP6},
    Place{89, KEY_KP7},      Place{90, KEY_F20},        Place{91, KEY_KP8},        Place{92, KEY_KP9},
    Place{93, KEY_YEN},      Place{94, KEY_RO},         Place{95, KEY_KPCOMMA},    Place{96, KEY_F5},
    Place{97, KEY_F6},       Place{98, KEY_F7},         Place{99, KEY_F3},         Place{100, KEY_F8},
    Place{101, KEY_F9},      Place{102, KEY_HANJA},     Place{103, KEY_F11},       Place{104, KEY_HANGEUL},
    Place{105, KEY_F13},     Place{106, KEY_F16},       Place{107, KEY_F14},       Place{109, KEY_F10},
    Place{110, KEY_COMPOSE}, Place{111, KEY_F12},       Place{113, KEY_F15},       Place{114, KEY_INSERT},
    Place{115, KEY_HOME},    Place{116, KEY_PAGEUP},    Place{117, KEY_DELETE},    Place{118, KEY_F4},
    Place{119, KEY_END},     Place{120, KEY_F2},        Place{121, KEY_PAGEDOWN},  Place{122, KEY_F1},
    Place{123, KEY_LEFT},    Place{124, KEY_RIGHT},     Place{125, KEY_DOWN},      Place{126, KEY_UP},
};

} // namespace

std::optional<int> inputEventCode(int virtualKeyCode)
{
    if (virtualKeyCode > virtual_key_code::foreign)
        return virtualKeyCode - virtual_key_code::foreign;
    const auto* const found = std::ranges::find(kPlaces, virtualKeyCode, &Place::virtualKeyCode);
    if (found == kPlaces.end())
        return std::nullopt;
    return found->inputEventCode;
}

int virtualKeyCode(int inputEventCode)
{
    const auto* const found = std::ranges::find(kPlaces, inputEventCode, &Place::inputEventCode);
    return found == kPlaces.end() ? virtual_key_code::foreign + inputEventCode : found->virtualKeyCode;
}

std::uint64_t modifierFlag(int virtualKeyCode)
{
    switch (virtualKeyCode) {
    case virtual_key_code::shift:
    case virtual_key_code::rightShift: return modifier_flags::shift;
    case virtual_key_code::control:
    case virtual_key_code::rightControl: return modifier_flags::control;
    case virtual_key_code::option:
    case virtual_key_code::rightOption: return modifier_flags::option;
    case virtual_key_code::command:
    case virtual_key_code::rightCommand: return modifier_flags::command;
    case virtual_key_code::function: return modifier_flags::function;
    case virtual_key_code::capsLock: return modifier_flags::capsLock;
    default: return 0;
    }
}

bool isFunctionKey(int virtualKeyCode)
{
    const auto code = inputEventCode(virtualKeyCode);
    return code && ((*code >= KEY_F1 && *code <= KEY_F10) || *code == KEY_F11 || *code == KEY_F12 ||
                    (*code >= KEY_F13 && *code <= KEY_F20));
}

int digitKeyCode(int digit)
{
    return virtualKeyCode(digit == 0 ? KEY_0 : KEY_1 + digit - 1);
}

} // namespace vocalith
