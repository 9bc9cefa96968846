#pragma once

namespace vocalith {

/// Makes the scenes and pictures of the windows known to Qt, and the items that the scenes are made of. Harmless when
/// it was done already.
void loadUiResources();

} // namespace vocalith
