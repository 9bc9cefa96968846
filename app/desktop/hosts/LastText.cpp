#include "app/desktop/hosts/LastText.h"

#include "core/output/TextOutput.h"
#include "core/storage/history/HistoryService.h"
#include "ports/Notices.h"

namespace vocalith {

LastText::LastText(HistoryService& history, TextOutput& output, Notices& notices)
    : m_history(history), m_output(output), m_notices(notices)
{}

void LastText::start()
{
    if (auto* const store = m_history.store())
        m_lookedThrough = store->indexingProgress().subscribe([this](const std::optional<double>& progress) {
            if (!progress)
                look();
        });
    look();
}

Task<void> LastText::shutDown()
{
    m_lookedThrough.reset();
    m_tasks.requestStop();
    co_await m_tasks.untilEmpty();
}

Task<void> LastText::lookForIt()
{
    const auto found = co_await find();
    if (found)
        isThere.set(!found->empty());
}

Task<void> LastText::deliver()
{
    auto found = co_await find();
    if (!found) {
        if (found.error().kind != HistoryError::Kind::cancelled)
            m_notices.show(userMessage(found.error()));
        co_return;
    }
    isThere.set(!found->empty()); // another process may have removed it
    if (found->empty()) {
        m_notices.show("There is no text in the history yet.");
        co_return;
    }
    auto text = std::move(*found);
    const auto delivered = co_await m_output.deliver(std::move(text), ActionMode::autoInsert);
    if (!delivered)
        m_notices.show(delivered.error().reason + (delivered.error().rescue.empty() ? "" : " ") +
                       delivered.error().rescue);
}

/// Entries that have failed have none, so it may be a few pages down.
Task<Result<std::string, HistoryError>> LastText::find()
{
    auto* const store = m_history.store();
    if (!store)
        co_return failure(HistoryError{HistoryError::Kind::file, "its folder cannot be made"});
    HistoryPageRequest request;
    do {
        const auto page = co_await store->page(request);
        if (!page)
            co_return failure(page.error());
        for (const auto& entry : page->entries) {
            auto text = finalText(entry);
            if (!text.empty())
                co_return std::move(text);
        }
        request.after = page->next;
    } while (request.after);
    co_return std::string();
}

} // namespace vocalith
