#include "core/storage/settings/SettingsBatch.h"

#include "core/storage/settings/file/SettingsFile.h"

namespace vocalith {

SettingsBatch::SettingsBatch(SettingsFile& file) : m_file(file)
{
    m_file.beginBatch();
}

SettingsBatch::~SettingsBatch()
{
    m_file.endBatch();
}

} // namespace vocalith
