#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace vocalith {

/// A link into the program: "vocalith://startSession?bundleID=org.example.Editor".
struct MainAppURL {
    enum class Route {
        startSession,       ///< start a dictation
        stopLiveActivity,   ///< end the ongoing session's live indicator
        transcribeFile,     ///< open file transcription
        subscriptionNeeded, ///< show the subscription screen
        base                ///< just bring the program forward
    };

    static constexpr std::string_view kScheme = "vocalith";
    static constexpr std::string_view kBundleID = "bundleID";
    static constexpr std::string_view kFileName = "fileName";

    Route route = Route::base;
    std::map<std::string, std::string> parameters;

    /// Reads a link; a desktop may have lower-cased its scheme and route. Nothing when it is none of this program's,
    /// the route is unknown or the link is damaged. A link without a route is `base`; of a repeated parameter the last
    /// counts.
    static std::optional<MainAppURL> parse(std::string_view url);
    std::string toString() const;

    bool operator==(const MainAppURL&) const = default;
};

} // namespace vocalith
