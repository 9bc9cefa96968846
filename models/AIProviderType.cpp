#include "models/AIProviderType.h"

#include "base/CaseName.h"
#include "base/Text.h"

namespace vocalith {

std::string iconPath(AIProviderType type)
{
    return "ai_providers/" + asciiLowerCase(caseName(type)) + ".png";
}

} // namespace vocalith
