#pragma once

#include <string>

namespace vocalith {

/// Why an operation on the history failed.
struct HistoryError {
    enum class Kind {
        notFound,   ///< there is no entry of that identifier
        unreadable, ///< the entry's file is there but holds no entry
        file,       ///< the system refused to read or write; `detail` names the file and says why
        cancelled
    };
    Kind kind = Kind::file;
    std::string detail; ///< for the log, and for people who want to mend it

    bool operator==(const HistoryError&) const = default;
};

/// The sentence that is shown to the user.
std::string userMessage(const HistoryError& error);

} // namespace vocalith
