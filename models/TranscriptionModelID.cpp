#include "models/TranscriptionModelID.h"

#include "base/CaseName.h"

namespace vocalith {

std::string toString(const TranscriptionModelID& id)
{
    if (const auto* predefined = std::get_if<PredefinedModelID>(&id))
        return std::string(caseName(*predefined));
    return std::get<std::string>(id);
}

std::span<const PredefinedModelID> allPredefinedModelIDs()
{
    return kAllCases<PredefinedModelID>;
}

std::optional<PredefinedModelID> predefinedModelID(std::string_view name)
{
    return caseNamed<PredefinedModelID>(name);
}

} // namespace vocalith
