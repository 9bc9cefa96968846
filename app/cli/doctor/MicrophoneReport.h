#pragma once

#include "ports/Diagnostics.h"

namespace vocalith {

class AudioInput;

/// Lists the microphones under the names by which one is chosen. An audio server that does not answer is for its own
/// diagnostics to report.
class MicrophoneReport final : public Diagnostics {
public:
    explicit MicrophoneReport(AudioInput& input) : m_input(input) {}

    Task<std::vector<Finding>> examine() override;

private:
    AudioInput& m_input;
};

} // namespace vocalith
