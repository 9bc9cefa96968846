#pragma once

namespace vocalith {

/// Starts this program anew, in the same process, with threads that sleep while they wait for each other; called first
/// of all in `main`. The OpenMP library spins by default, which costs a decode on a busy machine many times its time,
/// and it reads its environment only when it is loaded. Returns when the environment already says what to do, or when
/// the program cannot be started anew.
void reexecuteWithPassiveWaiting(char** argv);

} // namespace vocalith
