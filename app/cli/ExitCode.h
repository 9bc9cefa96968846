#pragma once

namespace vocalith {

/// What the program tells the shell.
enum ExitCode : int {
    exitSuccess = 0,
    exitFailure = 1,
    exitUsage = 2,      ///< the command line makes no sense
    exitNoSpeech = 3,   ///< the audio held no speech, or was too short to hold any
    exitCancelled = 130 ///< ended by Ctrl-C or Escape, as shells count it
};

} // namespace vocalith
