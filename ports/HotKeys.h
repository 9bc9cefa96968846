#pragma once

#include "base/Observable.h"
#include "base/Result.h"
#include "base/Uuid.h"
#include "models/KeyboardShortcut.h"

#include <cstdint>
#include <functional>
#include <string>

namespace vocalith {

struct HotKeyError {
    enum class Kind {
        taken,       ///< another program has this combination
        unknownKey,  ///< this keyboard has no such key
        unsupported, ///< this desktop offers no such shortcuts; `detail` says what to do instead
        failed       ///< anything else; `detail` says what
    };
    Kind kind = Kind::failed;
    int status = 0; ///< the platform's own number, for the log
    std::string detail{};
    bool operator==(const HotKeyError&) const = default;
};

/// The sentence that is shown to the user, with the keys by their names: what is wrong and what to do about it.
std::string userMessage(const HotKeyError& error, const KeyboardShortcut::Keys& keys);

/// A key combination that is to work wherever the focus is.
struct HotKey {
    Uuid shortcutID; ///< a desktop that lets the user rebind keys remembers its choice under this
    KeyboardShortcut::Keys keys;
    std::string description; ///< what it does, for the desktop's own list of shortcuts
    bool operator==(const HotKey&) const = default;
};

/// The modifier keys as they are held now.
struct ModifierChange {
    std::uint64_t rawFlags = 0;
    /// Another key went down, or a button or the wheel of the mouse: what is held belongs to a combination. Not told
    /// of a hot key of ours.
    bool otherKeyDown = false;
    bool operator==(const ModifierChange&) const = default;
};

/// Keys that reach the program whatever has the focus. Main thread; handlers are called from the event loop. What was
/// registered ends when its subscription does, which may outlive the port.
class HotKeys {
public:
    /// Called with true when the key goes down and with false when it comes up, once each: auto-repeat is not told.
    using Handler = std::function<void(bool isDown)>;

    virtual ~HotKeys() = default;

    /// Some desktops decide later (see `failed`); a success here means that nothing speaks against it yet.
    virtual Result<Subscription, HotKeyError> registerHotKey(const HotKey& hotKey, Handler handler) = 0;
    /// Whether keys can be taken for a while and given back, without a question to the user: those that mean something
    /// only while a dictation runs. Where they cannot, `registerHotKey` is for the user's own shortcuts alone.
    virtual bool takesKeysOnDemand() const = 0;
    /// Every change of the held modifier keys, for shortcuts that are made of nothing else.
    virtual Result<Subscription, HotKeyError> monitorModifiers(std::function<void(const ModifierChange&)> handler) = 0;

    /// A registration that had been taken has failed since, or was taken away by the desktop.
    Signal<Uuid, HotKeyError> failed;
};

} // namespace vocalith
