#include "core/output/typing/BorrowedPasteboard.h"

#include "base/OneShot.h"

namespace vocalith {

using Kind = PasteboardError::Kind;

BorrowedPasteboard::BorrowedPasteboard(Pasteboard& pasteboard, Clock& clock, Logger logger)
    : m_pasteboard(pasteboard), m_clock(clock), m_logger(std::move(logger))
{}

Task<Result<void, PasteboardError>> BorrowedPasteboard::put(std::string text, bool isTransient)
{
    m_restoreTimer.reset();
    co_await m_restores.untilEmpty();
    const bool hasTextBefore = m_snapshot && isOurs();
    const auto saved = co_await save();
    if (!saved)
        co_return saved;
    const auto written = co_await m_pasteboard.writeText(std::move(text), isTransient);
    const bool isPerhapsThere = written || written.error().kind == Kind::cancelled;
    if (isPerhapsThere)
        m_changeCount = m_pasteboard.changeCount();
    if (!written && (isPerhapsThere || hasTextBefore))
        giveBack();
    else if (!written)
        leaveText(); // it never left the user's hands
    co_return written;
}

Task<Result<void, PasteboardError>> BorrowedPasteboard::save()
{
    if (m_snapshot && isOurs())
        co_return Result<void, PasteboardError>(); // the text before is still there, and what was before it is known
    m_snapshot.reset();
    auto snapshot = co_await settledSnapshot();
    if (!snapshot && snapshot.error().kind == Kind::cancelled)
        co_return failure(snapshot.error());
    if (!snapshot || !snapshot->isComplete)
        m_logger.warning("Not all of the clipboard could be saved" +
                         (snapshot ? "" : ": " + userMessage(snapshot.error())));
    m_snapshot = snapshot ? std::move(*snapshot) : PasteboardSnapshot();
    co_return Result<void, PasteboardError>();
}

/// What is there after the reading as before it: a slow owner leaves the user time to copy something else.
Task<Result<PasteboardSnapshot, PasteboardError>> BorrowedPasteboard::settledSnapshot()
{
    for (int count = 1;; ++count) {
        const auto before = m_pasteboard.changeCount();
        auto snapshot = co_await m_pasteboard.snapshot();
        if (!snapshot || m_pasteboard.changeCount() == before || count == kMostSnapshots)
            co_return snapshot;
    }
}

Task<BorrowedPasteboard::Fate> BorrowedPasteboard::untilFetched()
{
    OneShot<Fate> told;
    const auto resolve = told.resolver();
    const auto onFetch = m_pasteboard.fetched.subscribe([resolve](const PasteboardFetch& fetch) {
        if (fetch.reader != PasteboardFetch::Reader::other)
            resolve(Fate::fetched);
    });
    const auto onChange = m_pasteboard.changed.subscribe([this, resolve] {
        if (!isOurs())
            resolve(Fate::taken);
    });
    const auto limit = m_clock.after(kRestoreDelay + kFetchGrace, [resolve] { resolve(Fate::notFetched); });
    const Instant pasted = m_clock.instant();

    const auto settled = co_await told;
    const Fate fate = settled.value_or(Fate::cancelled);
    const Duration elapsed = m_clock.instant() - pasted;
    if (fate == Fate::notFetched || fate == Fate::taken)
        leaveText();
    else if (elapsed < kRestoreDelay)
        m_restoreTimer = m_clock.after(kRestoreDelay - elapsed, [this] { giveBack(); });
    else
        m_restoreTimer = m_clock.after(kLateReading, [this] { giveBack(); });
    co_return fate;
}

void BorrowedPasteboard::giveBack()
{
    m_restoreTimer.reset();
    if (!m_snapshot)
        return;
    auto snapshot = std::move(*m_snapshot);
    m_snapshot.reset();
    if (isOurs())
        m_restores.start(restore(std::move(snapshot)));
}

Task<void> BorrowedPasteboard::restore(PasteboardSnapshot snapshot)
{
    const auto restored = co_await m_pasteboard.restore(std::move(snapshot));
    if (!restored)
        m_logger.error("Could not restore the clipboard: " + userMessage(restored.error()));
}

void BorrowedPasteboard::leaveText()
{
    m_restoreTimer.reset();
    m_snapshot.reset();
}

Task<void> BorrowedPasteboard::shutDown()
{
    giveBack();
    co_await m_restores.untilEmpty();
    co_await m_pasteboard.handOver();
}

} // namespace vocalith
