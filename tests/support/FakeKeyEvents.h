#pragma once

#include "base/OneShot.h"
#include "ports/KeyEvents.h"

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vocalith::test {

/// Keeps what was to be pressed and typed.
class FakeKeyEvents final : public KeyEvents {
public:
    struct Post {
        SourceState state = SourceState::hidSystem;
        std::vector<KeyEvent> events;
        bool operator==(const Post&) const = default;
    };

    std::unique_ptr<KeyEventSource> createSource(SourceState state) override;
    bool hasOwnUSLayout() const override { return isUSKeyboard; }
    Task<bool> modifiersReleased(double seconds) override;

    /// The user lets go of the keys, or the time for that is over.
    void endWait(bool areReleased);

    std::vector<Post> posts;
    std::vector<std::string> typed;
    std::vector<double> waits;                   ///< that were asked for, in seconds
    std::function<void(const Post&)> whenPosted; ///< what the desktop makes of it
    bool hasNoSource = false;
    bool isUSKeyboard = false;
    bool holdsModifiers = false; ///< the user does, until `endWait`
    std::set<int> missingKeys;
    std::optional<KeyEventsError> error; ///< of posting and typing

private:
    class Source;
    std::optional<OneShot<bool>::Resolver> m_wait;
};

} // namespace vocalith::test
