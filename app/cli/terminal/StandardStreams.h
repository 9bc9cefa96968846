#pragma once

namespace vocalith {

/// To be called first in `main`. A standard stream that whoever started the program has closed is opened so that its
/// use is an error, as the GNU tools do it: otherwise the next file that is opened would take its number, and be read
/// or written in its place. A reader that leaves is an error of the write as well, not the end of the program.
void prepareStandardStreams();

} // namespace vocalith
