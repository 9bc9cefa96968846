#include "models/AIProviderType.h"

#include "base/CaseName.h"

namespace vocalith {

std::string iconPath(AIProviderType type)
{
    std::string path = "ai_providers/";
    for (const char c : caseName(type))
        path += c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    return path + ".png";
}

} // namespace vocalith
