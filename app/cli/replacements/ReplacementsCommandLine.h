#pragma once

#include "app/cli/replacements/ReplacementsOptions.h"

#include <memory>
#include <optional>

namespace CLI {
class App;
} // namespace CLI

namespace vocalith {

/// The part of the command line that begins with "replacements".
class ReplacementsCommandLine {
public:
    explicit ReplacementsCommandLine(CLI::App& app);
    ReplacementsCommandLine(const ReplacementsCommandLine&) = delete;
    ReplacementsCommandLine& operator=(const ReplacementsCommandLine&) = delete;
    ~ReplacementsCommandLine();

    /// Nothing when the command is another one.
    std::optional<ReplacementsOptions> options() const;

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace vocalith
