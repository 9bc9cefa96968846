#pragma once

#include "core/session/OverlayDisplay.h"
#include "models/TranscriptionModelID.h"

#include <string>
#include <vector>

namespace vocalith {

class ConfigurationManager;

/// What the running dictation is for, and what follows from that. Belongs to the coordination of dictations; main
/// thread; used while a configuration is loaded.
class DictationMode {
public:
    explicit DictationMode(const ConfigurationManager& configuration) : m_configuration(configuration) {}

    /// A dictation begins. The prompts are from now on those of the configuration as it is: what the user sees is what
    /// a number chooses, whatever becomes of the settings.
    void begin(OverlayActivationMode mode);
    const OverlayActivationMode& get() const { return m_mode; }
    /// Makes it one for the n-th prompt, counted from 1; null where there is no such prompt.
    const AIPrompt* choose(int number);

    PromptChoice choice() const;
    /// The prompt's own model, or the default one.
    TranscriptionModelID model() const;
    bool hasOwnModel() const;
    std::string describe() const; ///< for the log

private:
    const ConfigurationManager& m_configuration;
    OverlayActivationMode m_mode;
    std::vector<AIPrompt> m_prompts;
    int m_numberKeys = 0;
};

} // namespace vocalith
