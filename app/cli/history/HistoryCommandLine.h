#pragma once

#include "app/cli/history/HistoryOptions.h"
#include "base/Result.h"

#include <memory>

namespace CLI {
class App;
}

namespace vocalith {

/// The part of the command line that begins with `vocalith history`. It lives until the line has been read.
class HistoryCommandLine {
public:
    explicit HistoryCommandLine(CLI::App& app);
    HistoryCommandLine(const HistoryCommandLine&) = delete;
    HistoryCommandLine& operator=(const HistoryCommandLine&) = delete;
    ~HistoryCommandLine();

    /// Whether this is what the user typed.
    bool isParsed() const;
    const RecognitionOptions& recognition() const;
    /// The error says what makes no sense.
    Result<HistoryOptions, std::string> options() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace vocalith
