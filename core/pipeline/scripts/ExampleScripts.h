#pragma once

#include <string>
#include <vector>

namespace vocalith {

/// A script that ships with the program, for people to start from.
struct ExampleScript {
    std::string name;        ///< what it is asked for by
    std::string description; ///< what it does, in a line
    std::string script;      ///< for zsh, as UTF-8
    bool operator==(const ExampleScript&) const = default;
};

/// All of them, in the order in which they are shown.
std::vector<ExampleScript> exampleScripts();

} // namespace vocalith
