#include "app/cli/settings/SettingSecrets.h"

#include "base/CaseName.h"
#include "models/AIProvider.h"

#include <fmt/format.h>

namespace vocalith {
namespace {

constexpr const char* kMask = "••••";
constexpr const char* kKey = "key";

std::string masked(const std::string& key)
{
    constexpr std::size_t kShown = 4;
    constexpr std::size_t kShortest = 3 * kShown; // of less there would be too little left to guess
    return kMask + (key.size() < kShortest ? std::string() : key.substr(key.size() - kShown));
}

/// Calls `action` with the record of each element that has one, and its place in the list.
template <class List, class Action>
void forRecords(List& providers, const Action& action)
{
    if (!providers.is_array())
        return;
    for (std::size_t i = 0; i < providers.size(); ++i) {
        if (!providers[i].is_object())
            continue;
        if (const auto record = providers[i].find("provider"); record != providers[i].end() && record->is_object())
            action(*record, i);
    }
}

std::string textAt(const Json& object, const char* key)
{
    const auto member = object.find(key);
    return member != object.end() && member->is_string() ? member->template get<std::string>() : std::string();
}

std::string keyOf(const Json& providers, const Json& id)
{
    std::string key;
    forRecords(providers, [&](const Json& record, std::size_t) {
        if (const auto own = record.find("id"); own != record.end() && *own == id)
            key = textAt(record, kKey);
    });
    return key;
}

std::string kindForPeople(const std::string& type)
{
    const auto kind = caseNamed<AIProviderKind>(type);
    return kind ? std::string(displayName(*kind)) : type;
}

} // namespace

Json withMaskedKeys(Json providers)
{
    forRecords(providers, [](Json& record, std::size_t) {
        if (const auto key = textAt(record, kKey); !key.empty())
            record[kKey] = masked(key);
    });
    return providers;
}

Json withoutKeys(Json providers)
{
    forRecords(providers, [](Json& record, std::size_t) {
        if (!textAt(record, kKey).empty())
            record.erase(kKey);
    });
    return providers;
}

Result<CompletedProviders, std::string> withCurrentKeys(Json providers, const Json& current)
{
    std::vector<std::string> keyless;
    std::string fault;
    forRecords(providers, [&](Json& record, std::size_t i) {
        const auto type = textAt(providers[i], "type");
        const auto given = textAt(record, kKey);
        const bool isMasked = given.starts_with(kMask);
        if ((record.contains(kKey) && !isMasked) || type == caseName(AIProviderKind::appleIntelligence))
            return;
        const auto id = record.find("id");
        const auto kept = id == record.end() ? std::string() : keyOf(current, *id);
        if (isMasked && masked(kept) != given)
            fault = fmt::format("[{}].provider.key: \"{}\" hides a key that is not the one that is set here. Write the "
                                "whole key, or leave \"key\" out to keep the one that is set.",
                                i, given);
        record[kKey] = kept;
        if (kept.empty())
            keyless.push_back(kindForPeople(type));
    });
    if (!fault.empty())
        return failure(fault);
    return CompletedProviders{std::move(providers), std::move(keyless)};
}

} // namespace vocalith
