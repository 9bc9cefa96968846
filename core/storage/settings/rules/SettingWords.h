#pragma once

#include "base/Data.h"
#include "base/Date.h"
#include "base/JsonFields.h"
#include "models/TranscriptionModelID.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Values as people type and read them. Any thread.
namespace vocalith {

/// "none": what stands for no value.
inline constexpr std::string_view kNone = "none";

/// Reads true, yes and on, and their contraries, in any case.
std::optional<bool> boolFromWord(std::string_view word);
/// Reads a JSON number and nothing around it.
std::optional<Json> numberFromWord(std::string_view word);
/// Reads a date or a time as ISO 8601 has them; a date means its beginning in UTC.
std::optional<Date> dateFromWord(const std::string& word);
/// An absolute path as the bytes that the settings keep.
std::optional<Data> pathFromWord(std::string_view word);

/// A voice model: a known one by its name in any case, else the identifier of another.
TranscriptionModelID modelFromWord(const std::string& word);
/// The one of the names that is meant, in any case.
std::optional<Json> caseFromWord(const std::string& word, const std::vector<std::string>& names);

/// With the fewest digits that stand for it: "0", "0.2".
std::string numberText(float number);

/// "one of: panel, notch"
std::string oneOf(const std::vector<std::string>& words);
/// "a list of prompts, as JSON" and the like.
std::string asJson(std::string_view what);
/// In quotes for a message: on one line, without what would confuse a terminal, and not too long.
std::string inQuotes(std::string_view text);
/// Whether it is valid UTF-8 without NUL, which would end it where C reads it.
bool isText(std::string_view bytes);

} // namespace vocalith
