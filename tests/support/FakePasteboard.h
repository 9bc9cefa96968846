#pragma once

#include "ports/Pasteboard.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vocalith::test {

/// A clipboard in memory that other programs share, as far as the test plays them.
class FakePasteboard final : public Pasteboard {
public:
    struct Write {
        std::string text;
        bool isTransient = false;
        bool operator==(const Write&) const = default;
    };

    Task<Result<PasteboardSnapshot, PasteboardError>> snapshot() override;
    Task<Result<void, PasteboardError>> writeText(std::string text, bool isTransient) override;
    Task<Result<void, PasteboardError>> restore(PasteboardSnapshot snapshot) override;
    std::int64_t changeCount() const override { return m_changeCount; }

    /// Somebody else copies this.
    void copyByOther(std::vector<PasteboardSnapshot::Representation> representations);
    void copyByOther(const std::string& text);
    /// The focused application, or another program, reads the text that stands there.
    std::string readBy(PasteboardFetch::Reader reader);

    const PasteboardSnapshot& content() const { return m_content; }
    std::string text() const; ///< the plain text of what stands there
    int changes() const { return static_cast<int>(m_changeCount); }

    std::vector<Write> writes;
    int restores = 0;
    std::optional<PasteboardError> snapshotError;
    std::optional<PasteboardError> writeError;
    bool answersInPart = false;           ///< a snapshot misses what there was
    bool holdsSnapshot = false;           ///< `snapshot` waits until it is stopped
    std::function<void()> duringSnapshot; ///< once, while the next snapshot is taken
    bool holdsWrite = false;              ///< `writeText` writes, and waits until it is stopped

private:
    void set(PasteboardSnapshot content);

    PasteboardSnapshot m_content;
    std::int64_t m_changeCount = 0;
    bool m_isOurs = false;
};

} // namespace vocalith::test
