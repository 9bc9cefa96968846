#pragma once

#include "base/Observable.h"
#include "base/Result.h"
#include "base/Task.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vocalith {

/// Everything that is on the clipboard, item by item and type by type.
struct PasteboardSnapshot {
    /// Bytes as the owner gave them; shared, since they may be large.
    using Payload = std::shared_ptr<const std::string>;

    struct Representation {
        std::string type; ///< a MIME type or the name of an X11 target
        Payload payload;
    };
    struct Item {
        std::vector<Representation> representations; ///< in the owner's order
    };

    std::vector<Item> items; ///< empty when the clipboard was empty
    /// Whether it is all that there was. Not so when the owner did not answer, or not in time.
    bool isComplete = true;
};

struct PasteboardError {
    enum class Kind {
        unavailable, ///< there is no clipboard that this program can reach; `detail` says what to do
        failed,      ///< anything else; `detail` says what
        cancelled
    };
    Kind kind = Kind::failed;
    std::string detail{};
    bool operator==(const PasteboardError&) const = default;
};

/// The sentence that is shown to the user: what is wrong and what to do about it.
std::string userMessage(const PasteboardError& error);

/// Somebody has read what this program put on the clipboard.
struct PasteboardFetch {
    enum class Reader {
        focusedApplication, ///< the one that the user works in, which a paste is for
        other,              ///< e.g. a clipboard manager
        unknown             ///< the desktop does not say who
    };
    Reader reader = Reader::unknown;
    std::string type;
};

/// The clipboard of the desktop, as owner and as reader. Main thread; it outlives its tasks.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;

    /// Reads all types of what is there. An owner that makes no progress for a while costs at most 0.5 s in all
    /// and leaves the snapshot incomplete. A stop yields `cancelled`.
    virtual Task<Result<PasteboardSnapshot, PasteboardError>> snapshot() = 0;
    /// Replaces the clipboard by plain UTF-8 text and becomes its owner. A transient text is marked so that clipboard
    /// histories leave it out.
    virtual Task<Result<void, PasteboardError>> writeText(std::string text, bool isTransient) = 0;
    /// Puts back what was there: every type of it, byte for byte. An empty snapshot empties the clipboard.
    virtual Task<Result<void, PasteboardError>> restore(PasteboardSnapshot snapshot) = 0;
    /// Before the program ends: gives what it owns to whoever keeps clipboards of programs that have gone, where the
    /// desktop has such a one. Takes at most two seconds.
    virtual Task<void> handOver() { co_return; }
    /// A number that rises with every change of the clipboard, whoever made it, as far as this program has been told.
    /// What `writeText` and `restore` change is counted when they yield, not again when the desktop tells of it.
    virtual std::int64_t changeCount() const = 0;

    /// A data type (not merely the list of types) of what `writeText` put there has been handed to a reader.
    Signal<PasteboardFetch> fetched;
    Signal<> changed; ///< `changeCount` has risen
};

} // namespace vocalith
