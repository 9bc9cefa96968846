#pragma once

#include "base/JsonFields.h"
#include "base/JsonRead_p.h"
#include "base/JsonWrite_p.h"

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>
#include <utility>

/// Reading and writing JSON, driven by the descriptions of JsonFields.h. Any thread; no exception leaves these
/// functions.
namespace vocalith {

/// Any stored value as JSON. A number that is not finite is written as 0, because JSON has no word for it and a record
/// must stay readable.
template <class T>
Json toJson(const T& value);

/// The value that the JSON stands for. Keys that the type does not know are passed over. `null` stands for an absent
/// optional.
template <class T>
Result<T, JsonError> fromJson(const Json& json);

/// Parses one JSON text (RFC 8259) nested at most 256 deep.
Result<Json, JsonError> parseJson(std::string_view text);

/// The JSON text: on one line, or with lines indented by `indent` spaces. Invalid UTF-8 becomes U+FFFD.
std::string dumpJson(const Json& json, int indent = -1);

template <class T>
Result<T, JsonError> fromJson(const Json& json)
{
    T value{};
    if (auto outcome = detail::readInto(json, value); !outcome)
        return failure(std::move(outcome.error()));
    return value;
}

} // namespace vocalith
