#pragma once

#include <optional>
#include <string>

namespace vocalith {

/// What the user chose for one recognition; what is absent comes from the settings.
struct RecognitionOptions {
    std::optional<std::string> model;
    std::optional<std::string> language;
};

} // namespace vocalith
