#pragma once

#include "base/Result.h"
#include "base/Task.h"
#include "models/AIConversation.h"
#include "models/AIToolSetID.h"
#include "models/AppError.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace vocalith {

/// A group of tools that a prompt can enable, with the operation that runs them. A value; `execute` starts on the main
/// thread and ends soon with an error when its task is asked to stop.
struct AIToolSet {
    using ID = AIToolSetID;
    using Arguments = std::map<std::string, Json>; ///< the decoded arguments of a call, by name
    using Execute = std::function<Task<Result<AITool::Response, AppError>>(AITool::Call call, Arguments arguments,
                                                                           AIConversation conversation)>;

    enum class ToolAvailability {
        userSelectable,              ///< the user switches it on for each prompt
        autoIncludedWhenToolsEnabled ///< there whenever any tool is, unless the prompt sets `disableAgentSystemTools`
    };

    ID id = ID::systemCommunication;
    std::string displayName;
    std::string icon; ///< the name of a symbol image
    std::vector<std::string> usageExamples;
    std::vector<AITool> tools;
    Execute execute;

    /// Whether both declare the same; what they do when executed cannot be compared.
    bool operator==(const AIToolSet& other) const
    {
        return id == other.id && displayName == other.displayName && icon == other.icon &&
               usageExamples == other.usageExamples && tools == other.tools;
    }
};

} // namespace vocalith
