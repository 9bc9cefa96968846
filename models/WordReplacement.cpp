#include "models/WordReplacement.h"

#include "base/Json.h"

#include <optional>

namespace vocalith {

namespace {

struct AnyWordReplacement {
    Uuid id;
    std::string original;
    std::string replacement;
    std::optional<bool> isRegex;
    std::optional<WordReplacementTiming> timing;
};

constexpr auto jsonFields(JsonType<AnyWordReplacement>)
{
    return fields(field("id", &AnyWordReplacement::id), field("original", &AnyWordReplacement::original),
                  field("replacement", &AnyWordReplacement::replacement),
                  field("isRegex", &AnyWordReplacement::isRegex), field("timing", &AnyWordReplacement::timing));
}

} // namespace

Result<WordReplacement, JsonError> readAnyWordReplacement(const Json& stored)
{
    return fromJson<AnyWordReplacement>(stored).map([](AnyWordReplacement&& any) {
        return WordReplacement{any.id, std::move(any.original), std::move(any.replacement), any.isRegex.value_or(false),
                               any.timing.value_or(WordReplacementTiming::beforeAI)};
    });
}

} // namespace vocalith
