#pragma once

#include "models/HistoryEntry.h"

#include <filesystem>
#include <optional>
#include <string>

namespace vocalith {

class HistoryOutput;

/// Enough of the identifier to name the entry by.
std::string shortID(const Uuid& id);

/// The entry as one line for people, as wide as the output: identifier, time, kind, duration, and its first words or
/// why it has none.
std::string historyLine(const HistoryEntry& entry, const HistoryOutput& output);

/// All about an entry for people, in several lines.
std::string historyDetails(const HistoryEntry& entry, const HistoryOutput& output);

/// The entry as it is stored, indented, with a line break at the end.
std::string storedForm(const HistoryEntry& entry);

/// The first words of a text, on one line.
std::string firstWords(const std::string& text, std::size_t columns);

/// Where the entry's recording should be; nothing when it names none on this machine.
std::optional<std::filesystem::path> recordingOf(const HistoryEntry& entry);

} // namespace vocalith
