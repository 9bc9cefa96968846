#pragma once

#include "base/Result.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Tables of comma-separated values as RFC 4180 has them, with any character as the separator. Any thread.
namespace vocalith {

/// A place in a text, both counted from 1; columns are counted in characters. Zeros where there is none.
struct TextPosition {
    std::size_t line = 0;
    std::size_t column = 0;
    bool operator==(const TextPosition&) const = default;
};

struct CsvField {
    std::string text;
    TextPosition position;
    bool operator==(const CsvField&) const = default;
};

using CsvRecord = std::vector<CsvField>;

struct CsvError {
    TextPosition position;
    std::string message; ///< a clause for people
    bool operator==(const CsvError&) const = default;
};

/// The records that hold anything, with the header line if there is one. Lines end as they do on any system; fields in
/// quotes may hold separators, line breaks and doubled quotes.
Result<std::vector<CsvRecord>, CsvError> readCsv(std::string_view utf8, char separator);

/// The field in quotes.
std::string quotedCsvField(std::string_view text);

} // namespace vocalith
