#pragma once

#include "base/Date.h"
#include "base/Uuid.h"
#include "models/AITool.h"

#include <string>
#include <variant>
#include <vector>

namespace vocalith {

enum class AIMessageRole { system, user, assistant, tool };

/// A text, the calls that the model asks for, or what one call yielded.
using AIMessageContent = std::variant<std::string, std::vector<AITool::Call>, AITool::Response>;

constexpr auto jsonUnion(JsonType<AIMessageContent>)
{
    return typedUnion("type", "value", "text", "toolCalls", "toolResponse");
}

struct AIMessage {
    Uuid id;
    AIMessageRole role = AIMessageRole::user;
    AIMessageContent content;
    Date timestamp;

    bool operator==(const AIMessage&) const = default;
};

constexpr auto jsonFields(JsonType<AIMessage>)
{
    return fields(field("id", &AIMessage::id), field("role", &AIMessage::role), field("content", &AIMessage::content),
                  field("timestamp", &AIMessage::timestamp));
}

/// What the user, the model and the tools have said so far.
struct AIConversation {
    Uuid id;
    std::vector<AIMessage> messages; ///< in order
    std::vector<AITool> availableTools;
    bool isComplete = false; ///< the model has given its final answer

    bool operator==(const AIConversation&) const = default;
};

constexpr auto jsonFields(JsonType<AIConversation>)
{
    return fields(field("id", &AIConversation::id), field("messages", &AIConversation::messages),
                  field("availableTools", &AIConversation::availableTools),
                  field("isComplete", &AIConversation::isComplete));
}

} // namespace vocalith
