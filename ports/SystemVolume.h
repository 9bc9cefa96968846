#pragma once

namespace vocalith {

/// The machine's output, silent while the user speaks. Main thread; never blocks.
class SystemVolume {
public:
    virtual ~SystemVolume() = default;

    /// Silences what the machine plays. What is silent already stays as it is, also at `restore`.
    virtual void mute() = 0;
    /// Gives the volume back to what it was before it was lowered; harmless when it was not.
    virtual void restore() = 0;
};

} // namespace vocalith
