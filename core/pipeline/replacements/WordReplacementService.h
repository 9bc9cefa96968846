#pragma once

#include "base/Log.h"
#include "base/Task.h"
#include "base/Worker.h"
#include "models/WordReplacement.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vocalith {

class Notices;
class PersistentAppStorage;

/// What one entry of the list did to a text.
struct ReplacementNote {
    std::string original;    ///< the spelling that was looked for, or the pattern
    std::size_t matches = 0; ///< how many were replaced
    std::string problem;     ///< why it was skipped; empty when it was not
    bool operator==(const ReplacementNote&) const = default;
};

struct ReplacementResult {
    std::string text;
    /// Of the spellings and patterns that matched or were skipped, in the order in which they were applied.
    std::vector<ReplacementNote> notes;
    bool operator==(const ReplacementResult&) const = default;
};

/// Writes the user's words in place of others. Lives as long as the program; called on the main thread, works on a
/// thread of its own.
class WordReplacementService {
public:
    WordReplacementService(PersistentAppStorage& appStorage, Notices& notices, Logger logger);

    /// The stored entries of that timing, in their order; all of them for `both`.
    std::vector<WordReplacement> replacements(WordReplacementTiming timing) const;

    /// Applies the entries one after the other, each to what those before it have made of the text. An entry that
    /// cannot be applied is skipped, logged and noted; one that was stopped because it took too long is also told to
    /// the user. When the task is asked to stop it yields the text as it was.
    Task<ReplacementResult> apply(std::vector<WordReplacement> list, std::string text);

private:
    PersistentAppStorage& m_appStorage;
    Notices& m_notices;
    const Logger m_logger;
    Worker m_worker;
};

} // namespace vocalith
