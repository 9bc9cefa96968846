#include "app/overlay/DictationMode.h"

#include "core/session/ConfigurationManager.h"

#include <algorithm>

namespace vocalith {

void DictationMode::begin(OverlayActivationMode mode)
{
    m_mode = std::move(mode);
    m_prompts = m_configuration.configuration()->prompts;
    m_numberKeys = m_configuration.configuration()->numberKeys;
}

const AIPrompt* DictationMode::choose(int number)
{
    if (number < 1 || static_cast<std::size_t>(number) > m_prompts.size())
        return nullptr;
    m_mode = m_prompts[static_cast<std::size_t>(number - 1)];
    return &std::get<AIPrompt>(m_mode);
}

PromptChoice DictationMode::choice() const
{
    PromptChoice choice;
    if (const auto* prompt = std::get_if<AIPrompt>(&m_mode))
        choice.name = prompt->name;
    if (m_prompts.size() < 2) // there is nothing to choose
        return choice;
    const auto numbered = std::min(m_prompts.size(), static_cast<std::size_t>(m_numberKeys));
    for (std::size_t i = 0; i < numbered; ++i)
        choice.numbered.push_back(m_prompts[i].name);
    return choice;
}

bool DictationMode::hasOwnModel() const
{
    const auto* prompt = std::get_if<AIPrompt>(&m_mode);
    return prompt && prompt->transcriptionModelID;
}

TranscriptionModelID DictationMode::model() const
{
    return hasOwnModel() ? *std::get<AIPrompt>(m_mode).transcriptionModelID
                         : m_configuration.configuration()->defaultModel;
}

std::string DictationMode::describe() const
{
    const auto* prompt = std::get_if<AIPrompt>(&m_mode);
    return prompt ? "aiPrompt(" + prompt->name + ")" : "voiceJournal";
}

} // namespace vocalith
