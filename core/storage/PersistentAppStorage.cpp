#include "core/storage/PersistentAppStorage.h"

#include "core/storage/Setting_p.h"
#include "core/storage/SettingsFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <thread>

namespace vocalith {

std::optional<Json> detail::StoredSetting<float>::encode(float value)
{
    return toJson(std::stod(fmt::format("{}", value)));
}

Result<float, JsonError> detail::StoredSetting<float>::decode(const Json& stored)
{
    return fromJson<double>(stored).map([](double value) { return static_cast<float>(value); });
}

PersistentAppStorage::PersistentAppStorage(std::filesystem::path settingsFile, const Clock& clock, Logger logger)
    : m_file(std::make_unique<SettingsFile>(std::move(settingsFile), clock, std::move(logger)))
{}

PersistentAppStorage::~PersistentAppStorage() = default;

int PersistentAppStorage::defaultWhisperThreads()
{
    constexpr int kEnough = 4; // more hardly speed a decode up
    return std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, kEnough);
}

} // namespace vocalith
