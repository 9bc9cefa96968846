#pragma once

#include "base/Result.h"

#include <filesystem>
#include <string>

namespace vocalith {

/// The files of an English PocketSphinx model.
struct PocketSphinxModel {
    std::filesystem::path acousticModel; ///< a folder
    std::filesystem::path languageModel;
    std::filesystem::path dictionary;
};

/// The model in that folder once its files are all there and begin as they must, or the name of the first that does
/// not: the library ends the process over some files that it cannot read.
Result<PocketSphinxModel, std::string> findPocketSphinxModel(const std::filesystem::path& folder);

} // namespace vocalith
