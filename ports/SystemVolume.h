#pragma once

namespace vocalith {

/// The machine's output volume, lowered while the user speaks. Main thread.
class SystemVolume {
public:
    virtual ~SystemVolume() = default;

    /// Gives the volume back to what it was before it was lowered; harmless when it was not.
    virtual void restore() = 0;
};

} // namespace vocalith
