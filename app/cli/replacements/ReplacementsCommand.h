#pragma once

#include "app/cli/replacements/ReplacementsOptions.h"
#include "base/Result.h"
#include "base/Task.h"

#include <string>
#include <vector>

namespace vocalith {

class PersistentAppStorage;
class Terminal;
class WordReplacementService;

/// `vocalith replacements`: shows, changes and tries the word replacements. Lists and texts go to standard output,
/// everything else to standard error. A running program takes a change at once. Main thread.
class ReplacementsCommand {
public:
    ReplacementsCommand(PersistentAppStorage& storage, WordReplacementService& service, Terminal& terminal);

    /// Yields the exit code.
    Task<int> run(const ReplacementsOptions& options);

private:
    int run(const ReplacementsListOptions& options);
    int run(const ReplacementsAddOptions& options);
    int run(const ReplacementsEditOptions& options);
    int run(const ReplacementsRemoveOptions& options);
    int run(const ReplacementsImportOptions& options);
    int run(const ReplacementsExportOptions& options);
    Task<int> run(ReplacementsTestOptions options);
    /// The text with the entries of that timing applied; says which matched.
    Task<std::string> applied(WordReplacementTiming timing, std::string text);

    /// Whether the entry can stand in the list, where the one at `own` is itself.
    Result<void, std::string> check(const WordReplacement& entry, std::size_t own) const;
    void warn(const WordReplacement& entry);
    int store(std::vector<WordReplacement> list, const std::string& done);
    int print(const std::string& text);
    int complain(const std::string& text, int exitCode);

    PersistentAppStorage& m_storage;
    WordReplacementService& m_service;
    Terminal& m_terminal;
};

} // namespace vocalith
