#pragma once

#include "ports/FocusedApp.h"
#include "ports/HotKeys.h"
#include "ports/InputSources.h"
#include "ports/KeyEvents.h"
#include "ports/Pasteboard.h"

namespace vocalith {

/// What stands where the desktop offers nothing: everything that is asked of it is refused, with the way out.

class NoHotKeys final : public HotKeys {
public:
    Result<Subscription, HotKeyError> registerHotKey(const HotKey&, Handler) override { return refuse(); }
    bool takesKeysOnDemand() const override { return false; }
    Result<Subscription, HotKeyError> monitorModifiers(std::function<void(const ModifierChange&)>) override
    {
        return refuse();
    }

private:
    static Result<Subscription, HotKeyError> refuse()
    {
        return failure(HotKeyError{HotKeyError::Kind::unsupported, 0,
                                   "Bind the command \"vocalith toggle\" to a key in your desktop's own settings."});
    }
};

class NoPasteboard final : public Pasteboard {
public:
    Task<Result<PasteboardSnapshot, PasteboardError>> snapshot() override { co_return PasteboardSnapshot(); }
    Task<Result<void, PasteboardError>> writeText(std::string, bool) override { co_return refuse(); }
    Task<Result<void, PasteboardError>> restore(PasteboardSnapshot) override { co_return refuse(); }
    std::int64_t changeCount() const override { return 0; }

private:
    static Result<void, PasteboardError> refuse()
    {
        return failure(
            PasteboardError{PasteboardError::Kind::unavailable, "Find the text with: vocalith history show last"});
    }
};

class NoKeyEvents final : public KeyEvents {
public:
    std::unique_ptr<KeyEventSource> createSource(SourceState) override { return nullptr; }
    bool hasOwnUSLayout() const override { return false; }
    Task<bool> modifiersReleased(double) override { co_return true; }
};

class NoInputSources final : public InputSources {
public:
    std::optional<std::string> current() const override { return std::nullopt; }
    std::vector<std::string> installed() const override { return {}; }
    bool select(const std::string&) override { return false; }
};

class NoFocusedApp final : public FocusedApp {
public:
    Task<std::optional<FocusedApplication>> focused() override { co_return std::nullopt; }
};

} // namespace vocalith
