#pragma once

#include "base/Json.h"
#include "base/Result.h"

#include <string>
#include <vector>

/// The API keys in lists of AI providers: showing them, leaving them out, and keeping them.
namespace vocalith {

/// With "••••1234" in place of every key.
Json withMaskedKeys(Json providers);
/// Without the keys; a provider whose key is empty keeps that.
Json withoutKeys(Json providers);

struct CompletedProviders {
    Json providers;
    std::vector<std::string> keyless; ///< what still needs a key: the kinds, for people
};

/// With the keys of `current` for the same providers, where `providers` has them masked or not at all. One that
/// `current` does not know has no key then. A mask that fits no key of `current` is an error, a sentence.
Result<CompletedProviders, std::string> withCurrentKeys(Json providers, const Json& current);

} // namespace vocalith
