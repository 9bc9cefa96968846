#pragma once

#include <memory>
#include <string>

class QCoreApplication;

namespace vocalith {

/// Qt's application object of a program with windows, which go on when the last of them is closed. `platform` says, as
/// Qt names its platforms, what they are shown on: "xcb", "wayland". There is no other application object meanwhile;
/// `argc` and `argv` outlive it.
std::unique_ptr<QCoreApplication> makeWindowApplication(const std::string& platform, int& argc, char** argv);

} // namespace vocalith
