#include "tests/support/FakePasteboard.h"

#include "base/OneShot.h"

namespace vocalith::test {
namespace {

constexpr const char* kPlainText = "text/plain;charset=utf-8";

PasteboardSnapshot plainText(const std::string& text)
{
    PasteboardSnapshot snapshot;
    snapshot.items.push_back({{{kPlainText, std::make_shared<const std::string>(text)}}});
    return snapshot;
}

const PasteboardError kCancelled{PasteboardError::Kind::cancelled, {}};

} // namespace

Task<Result<PasteboardSnapshot, PasteboardError>> FakePasteboard::snapshot()
{
    if (holdsSnapshot) {
        OneShot<bool> never;
        co_await never;
        co_return failure(kCancelled);
    }
    if (snapshotError)
        co_return failure(*snapshotError);
    PasteboardSnapshot copy = m_content;
    if (const auto meanwhile = std::exchange(duringSnapshot, {}))
        meanwhile();
    if (answersInPart) {
        copy.items.clear();
        copy.isComplete = false;
    }
    co_return copy;
}

Task<Result<void, PasteboardError>> FakePasteboard::writeText(std::string text, bool isTransient)
{
    if (writeError)
        co_return failure(*writeError);
    set(plainText(text));
    m_isOurs = true;
    writes.push_back({std::move(text), isTransient});
    if (holdsWrite) {
        OneShot<bool> never;
        co_await never;
        co_return failure(kCancelled);
    }
    co_return Result<void, PasteboardError>();
}

Task<Result<void, PasteboardError>> FakePasteboard::restore(PasteboardSnapshot snapshot)
{
    ++restores;
    set(std::move(snapshot));
    m_isOurs = false;
    co_return Result<void, PasteboardError>();
}

void FakePasteboard::set(PasteboardSnapshot content)
{
    m_content = std::move(content);
    ++m_changeCount;
    changed.emit();
}

void FakePasteboard::copyByOther(std::vector<PasteboardSnapshot::Representation> representations)
{
    m_isOurs = false;
    PasteboardSnapshot content;
    content.items.push_back({std::move(representations)});
    set(std::move(content));
}

void FakePasteboard::copyByOther(const std::string& text)
{
    m_isOurs = false;
    set(plainText(text));
}

std::string FakePasteboard::readBy(PasteboardFetch::Reader reader)
{
    auto read = text();
    if (m_isOurs)
        fetched.emit({reader, kPlainText});
    return read;
}

std::string FakePasteboard::text() const
{
    for (const auto& item : m_content.items) {
        for (const auto& representation : item.representations) {
            if (representation.type.starts_with("text/plain"))
                return *representation.payload;
        }
    }
    return {};
}

} // namespace vocalith::test
