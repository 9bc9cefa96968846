#pragma once

#include "base/OneShot.h"
#include "ports/FocusedApp.h"

namespace vocalith::test {

/// The application that the test says has the focus.
class FakeFocusedApp final : public FocusedApp {
public:
    Task<std::optional<FocusedApplication>> focused() override
    {
        if (hangs) {
            OneShot<bool> never;
            co_await never;
            co_return std::nullopt;
        }
        co_return application;
    }

    std::optional<FocusedApplication> application =
        FocusedApplication{"org.example.editor", "Editor", "letter.txt", 4711, false, std::nullopt};
    bool hangs = false; ///< no answer until the wait is stopped
};

} // namespace vocalith::test
