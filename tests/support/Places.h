#pragma once

#include <filesystem>
#include <string>

namespace vocalith::test {

/// The program's file.
std::string programFile();
/// The folder of golden files and other data of the tests.
std::filesystem::path testData();
/// A recording of somebody who speaks: 16 kHz, mono.
std::filesystem::path recordedSpeech();

} // namespace vocalith::test
