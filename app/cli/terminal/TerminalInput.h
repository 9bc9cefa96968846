#pragma once

#include "base/Observable.h"

#include <memory>

namespace vocalith {

/// Ctrl-C and the polite requests to end, as signals on the main thread. At most one at a time in the program. A
/// second Ctrl-C ends the program at once, as ever.
class InterruptSignals {
public:
    InterruptSignals();
    InterruptSignals(const InterruptSignals&) = delete;
    InterruptSignals& operator=(const InterruptSignals&) = delete;
    ~InterruptSignals();

    Signal<> interrupted; ///< SIGINT
    Signal<> terminated;  ///< SIGTERM, SIGHUP

private:
    struct Private;
    std::unique_ptr<Private> d;
};

/// The keys that end a recording, read from standard input: a terminal gives them key by key, without echo, for as long
/// as this lives; from a pipe a line or the end counts as Enter. Any other standard input (/dev/null, a file) has no
/// keys. Main thread.
class TerminalKeys {
public:
    TerminalKeys();
    TerminalKeys(const TerminalKeys&) = delete;
    TerminalKeys& operator=(const TerminalKeys&) = delete;
    ~TerminalKeys();

    Signal<> enterPressed;
    Signal<> escapePressed;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace vocalith
