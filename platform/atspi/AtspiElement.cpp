#include "platform/atspi/AtspiElement_p.h"

#include "platform/atspi/CodePoints_p.h"
#include "platform/atspi/WindowText_p.h"

#include <algorithm>

namespace vocalith {
namespace {

// The numbers of the errors.
constexpr int kNotEditable = 1;
constexpr int kNoAnswer = 2;
constexpr int kRefused = 3;
constexpr int kUnchanged = 4; ///< it said yes and did nothing

constexpr unsigned kScreenCoordinates = 0;

bool saysYes(const AtspiAnswer& answer)
{
    const auto value = answer ? valueOf(*answer) : std::nullopt;
    return value && value->toBool();
}

bool isAnswered(const AtspiAnswer& answer)
{
    return answer && answer->type() == QDBusMessage::ReplyMessage;
}

} // namespace

/// In the toolkit's own units, with 0 <= start <= end <= length.
struct AtspiElement::Position {
    int length = 0;
    int start = 0; ///< of the selection; the caret where there is none
    int end = 0;
    int caret = 0;
};

AtspiElement::AtspiElement(std::shared_ptr<AtspiBus> bus, FocusedNode node, AtspiTraits traits)
    : m_bus(std::move(bus)), m_node(std::move(node)), m_traits(traits)
{}

AtspiCall AtspiElement::textCall(const char* method, QVariantList arguments) const
{
    return {m_node.node, atspi::kText, method, std::move(arguments)};
}

AtspiCall AtspiElement::editCall(const char* method, QVariantList arguments) const
{
    return {m_node.node, atspi::kEditableText, method, std::move(arguments)};
}

Task<std::optional<AtspiElement::Position>> AtspiElement::position(Instant deadline)
{
    AtspiReply lengthReply(*m_bus, AtspiCall::property(m_node.node, atspi::kText, "CharacterCount"), deadline);
    AtspiReply caretReply(*m_bus, AtspiCall::property(m_node.node, atspi::kText, "CaretOffset"), deadline);
    AtspiReply countReply(*m_bus, textCall("GetNSelections", {}), deadline);
    AtspiReply selectionReply(*m_bus, textCall("GetSelection", {0}), deadline);
    const auto length = co_await lengthReply.message;
    const auto caret = co_await caretReply.message;
    const auto count = co_await countReply.message;
    const auto selection = co_await selectionReply.message;
    if (!numberOf(length) || !numberOf(caret))
        co_return std::nullopt;
    Position position;
    position.length = std::max(*numberOf(length), 0);
    position.caret = std::clamp(*numberOf(caret), 0, position.length);
    position.start = position.end = position.caret;
    if (numberOf(count).value_or(0) > 0 && numberOf(selection, 0) && numberOf(selection, 1)) {
        const auto [first, last] = std::minmax({*numberOf(selection, 0), *numberOf(selection, 1)});
        position.start = std::clamp(first, 0, position.length);
        position.end = std::clamp(last, 0, position.length);
    }
    co_return position;
}

Task<int> AtspiElement::setSelectedText(std::string text)
{
    if (!m_traits.isEditable)
        co_return kNotEditable;
    const Instant until = deadline();
    const auto before = co_await position(until);
    if (!before)
        co_return kNoAnswer;
    const QString inserted = QString::fromStdString(text);
    const auto units = static_cast<int>(inserted.size());
    const int points = static_cast<int>(inserted.toUcs4().size());
    const int length = m_traits.countsUtf16 ? units : static_cast<int>(text.size());
    // Behind the selection first: whatever fails, nothing of the user's is gone without the new text being there.
    AtspiReply insertion(*m_bus, editCall("InsertText", {before->end, inserted, length}), until);
    const auto insertionAnswer = co_await insertion.message;
    if (!isAnswered(insertionAnswer))
        co_return kNoAnswer;
    if (!saysYes(insertionAnswer))
        co_return kRefused;
    AtspiReply lengthReply(*m_bus, AtspiCall::property(m_node.node, atspi::kText, "CharacterCount"), until);
    const auto newLength = co_await lengthReply.message;
    if (numberOf(newLength) == before->length)
        co_return kUnchanged;
    if (before->end > before->start) {
        AtspiReply deletion(*m_bus, editCall("DeleteText", {before->start, before->end}), until);
        co_await deletion.message; // at worst what was selected still stands before the text
    }
    const int caret = before->start + (m_traits.countsUtf16 ? units : points);
    AtspiReply caretReply(*m_bus, textCall("SetCaretOffset", {caret}), until);
    co_await caretReply.message; // at worst the caret stands somewhere else
    co_return 0;
}

Task<std::optional<FocusedText>> AtspiElement::text(int limit)
{
    if (m_traits.isSecure || !m_traits.hasText)
        co_return std::nullopt;
    const Instant until = deadline();
    const auto at = co_await position(until);
    if (!at)
        co_return std::nullopt;
    const int units = 2 * limit; // a character may be two of them
    AtspiReply beforeReply(*m_bus, textCall("GetText", {std::max(at->start - units, 0), at->start}), until);
    AtspiReply selectionReply(*m_bus, textCall("GetText", {at->start, std::min(at->end, at->start + units)}), until);
    AtspiReply afterReply(*m_bus, textCall("GetText", {at->end, std::min(at->end + units, at->length)}), until);
    AtspiReply caretReply(*m_bus, textCall("GetCharacterExtents", {at->caret, kScreenCoordinates}), until);
    const auto before = co_await beforeReply.message;
    const auto selection = co_await selectionReply.message;
    const auto after = co_await afterReply.message;
    const auto caret = co_await caretReply.message;
    FocusedText text;
    text.before = lastCharacters(textOf(before).value_or(""), limit);
    if (at->end > at->start)
        text.selection = firstCharacters(textOf(selection).value_or(""), limit);
    if (at->end < at->length)
        text.after = firstCharacters(textOf(after).value_or(""), limit);
    if (const auto height = numberOf(caret, 3); height && *height > 0)
        text.caret = ScreenRectangle{*numberOf(caret, 0), *numberOf(caret, 1), *numberOf(caret, 2), *height};
    co_return text;
}

Task<std::string> AtspiElement::visibleText(int limit)
{
    co_return co_await windowText(*m_bus, m_node.window, limit, deadline());
}

} // namespace vocalith
