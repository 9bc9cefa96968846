#pragma once

#include "core/output/TextOutput.h"

#include <filesystem>
#include <functional>

namespace vocalith {

class Terminal;

/// Saves a text that could not be handed over in a file of `folder` and yields the sentence that says where; empty when
/// that failed too.
std::string saveUndelivered(const std::filesystem::path& folder, const std::string& text);

/// Hands dictated text to whoever reads standard output, one dictation a line. When that cannot be written, the text is
/// saved in a file of the rescue folder.
class StandardOutput final : public TextOutput {
public:
    /// Turns the text into what is printed, without the last line break.
    using Format = std::function<std::string(const std::string& text)>;

    StandardOutput(Terminal& terminal, std::filesystem::path rescueFolder);

    /// Without one the text is printed as it is.
    void setFormat(Format format) { m_format = std::move(format); }

    Task<Result<TextDestination, TextOutputError>> deliver(std::string text, ActionMode action) override;

private:
    Terminal& m_terminal; // shares the screen with standard output
    const std::filesystem::path m_rescueFolder;
    Format m_format;
};

} // namespace vocalith
