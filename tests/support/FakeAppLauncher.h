#pragma once

#include "ports/AppLauncher.h"

#include <optional>
#include <string>
#include <vector>

namespace vocalith::test {

/// Notes what it was asked to open: "open https://…", "launch org.example.Editor".
class FakeAppLauncher final : public AppLauncher {
public:
    Task<Result<void, AppLaunchError>> openURL(std::string url) override { co_return answer("open " + url); }
    Task<Result<void, AppLaunchError>> launchApp(std::string bundleID) override
    {
        co_return answer("launch " + bundleID);
    }

    void failFromNowOn(AppLaunchError error) { m_error = std::move(error); }
    const std::vector<std::string>& asked() const { return m_asked; }

private:
    Result<void, AppLaunchError> answer(std::string what)
    {
        m_asked.push_back(std::move(what));
        return m_error ? Result<void, AppLaunchError>(failure(*m_error)) : Result<void, AppLaunchError>();
    }

    std::optional<AppLaunchError> m_error;
    std::vector<std::string> m_asked;
};

} // namespace vocalith::test
