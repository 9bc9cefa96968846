#pragma once

#include "base/JsonFields.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vocalith {

/// A function that a language model may call, declared in the JSON shape of OpenAI-style chat completions.
struct AITool {
    enum class ToolType { function };

    struct Function {
        struct Parameters {
            enum class Type { object };

            struct Property {
                enum class Type { string, array, object, number, boolean };

                /// What an array holds.
                struct Items {
                    enum class Type { string, object, number, boolean };
                    Type type = Type::string;
                    std::string description;

                    bool operator==(const Items&) const = default;
                };

                Type type = Type::string;
                std::string description;
                std::optional<Items> items; ///< for arrays

                bool operator==(const Property&) const = default;
            };

            Type type = Type::object;
            std::map<std::string, Property> properties; ///< by parameter name
            std::vector<std::string> required;

            bool operator==(const Parameters&) const = default;
        };

        std::string name;
        std::string description;
        Parameters parameters;

        bool operator==(const Function&) const = default;
    };

    /// A call that the model asks for.
    struct Call {
        struct Function {
            std::string name;
            std::string arguments; ///< a JSON text, as the model wrote it

            bool operator==(const Function&) const = default;
        };

        std::string id; ///< as the model gave it
        ToolType type = ToolType::function;
        Function function;

        bool operator==(const Call&) const = default;
    };

    /// What a call yielded.
    struct Response {
        enum class Role { tool };

        Role role = Role::tool;
        std::string toolCallId;
        std::string name;
        std::string content;

        bool operator==(const Response&) const = default;
    };

    ToolType type = ToolType::function;
    Function function;

    bool operator==(const AITool&) const = default;
};

constexpr auto jsonFields(JsonType<AITool::Function::Parameters::Property::Items>)
{
    using Items = AITool::Function::Parameters::Property::Items;
    return fields(field("type", &Items::type), field("description", &Items::description));
}

constexpr auto jsonFields(JsonType<AITool::Function::Parameters::Property>)
{
    using Property = AITool::Function::Parameters::Property;
    return fields(field("type", &Property::type), field("description", &Property::description),
                  field("items", &Property::items));
}

constexpr auto jsonFields(JsonType<AITool::Function::Parameters>)
{
    using Parameters = AITool::Function::Parameters;
    return fields(field("type", &Parameters::type), field("properties", &Parameters::properties),
                  field("required", &Parameters::required));
}

constexpr auto jsonFields(JsonType<AITool::Function>)
{
    using Function = AITool::Function;
    return fields(field("name", &Function::name), field("description", &Function::description),
                  field("parameters", &Function::parameters));
}

constexpr auto jsonFields(JsonType<AITool>)
{
    return fields(field("type", &AITool::type), field("function", &AITool::function));
}

constexpr auto jsonFields(JsonType<AITool::Call::Function>)
{
    using Function = AITool::Call::Function;
    return fields(field("name", &Function::name), field("arguments", &Function::arguments));
}

constexpr auto jsonFields(JsonType<AITool::Call>)
{
    using Call = AITool::Call;
    return fields(field("id", &Call::id), field("type", &Call::type), field("function", &Call::function));
}

constexpr auto jsonFields(JsonType<AITool::Response>)
{
    using Response = AITool::Response;
    return fields(field("role", &Response::role), field("toolCallId", &Response::toolCallId),
                  field("name", &Response::name), field("content", &Response::content));
}

} // namespace vocalith
