#pragma once

#include "app/cli/Options.h"

#include <memory>

class QCoreApplication;

namespace vocalith {

/// Qt's application object for the command: one with windows for the resident program, one without for all others. Null
/// when there is no display for it, which the user has then been told. `argc` outlives the object.
std::unique_ptr<QCoreApplication> makeApplication(const Command& command, int& argc, char** argv);

} // namespace vocalith
