#pragma once

#include "app/cli/Options.h"

#include <string>
#include <vector>

namespace vocalith {

class Terminal;

/// One row of the list.
struct ModelRow {
    std::string id;
    std::string name;
    std::string family; ///< "local", "online", "system" or "own key"
    std::string size;   ///< as its label says; empty when there is nothing to download
    std::string state;  ///< "ready", or why it is not, in a word or two
    bool isReady = false;
    bool isDefault = false; ///< the one that serves when none is named
};

/// `vocalith models list`: prints the rows to standard output. Yields the exit code.
int listModels(const ModelsOptions& options, const std::vector<ModelRow>& rows, Terminal& terminal);

} // namespace vocalith
