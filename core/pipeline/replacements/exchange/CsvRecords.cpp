#include "core/pipeline/replacements/exchange/CsvRecords.h"

#include <csv.h>

#include <algorithm>
#include <memory>

namespace vocalith {
namespace {

struct ParserEnd {
    void operator()(csv_parser* parser) const
    {
        csv_free(parser);
        delete parser;
    }
};

/// Gives the library one byte at a time: it does not say where a field is.
class Reader {
public:
    explicit Reader(char separator) : m_parser(new csv_parser())
    {
        csv_init(m_parser.get(), CSV_STRICT | CSV_STRICT_FINI);
        csv_set_delim(m_parser.get(), static_cast<unsigned char>(separator));
        csv_set_space_func(m_parser.get(), [](unsigned char) { return 0; }); // spaces belong to their field
    }

    Result<std::vector<CsvRecord>, CsvError> read(std::string_view text)
    {
        for (const char byte : text) {
            if (m_isAtStart && byte != '\n' && byte != '\r') {
                m_start = m_here;
                m_isAtStart = false;
            }
            if (csv_parse(m_parser.get(), &byte, 1, &Reader::onField, &Reader::onRecord, this) != 1)
                return failure(CsvError{m_here,
                                        "a quotation mark must be at the beginning or the end of its field, and "
                                        "doubled inside it"});
            advance(byte);
        }
        if (csv_fini(m_parser.get(), &Reader::onField, &Reader::onRecord, this) != 0)
            return failure(CsvError{m_start, "a field begins with a quotation mark and has none at its end"});
        return std::move(m_records);
    }

private:
    static void onField(void* text, std::size_t length, void* self)
    {
        auto& reader = *static_cast<Reader*>(self);
        const auto* const begin = static_cast<const char*>(text);
        reader.m_record.push_back({length == 0 ? std::string() : std::string(begin, length), reader.m_start});
        reader.m_isAtStart = true;
    }

    static void onRecord(int, void* self)
    {
        auto& reader = *static_cast<Reader*>(self);
        const bool isEmpty = std::ranges::all_of(reader.m_record, [](const auto& field) { return field.text.empty(); });
        if (!isEmpty)
            reader.m_records.push_back(std::move(reader.m_record));
        reader.m_record.clear();
    }

    void advance(char byte)
    {
        const bool isOfLineEnd = byte == '\n' && m_last == '\r';
        m_last = byte;
        if (isOfLineEnd)
            return;
        if (byte == '\n' || byte == '\r')
            m_here = {m_here.line + 1, 1};
        else if ((static_cast<unsigned char>(byte) & 0xC0) != 0x80) // the first byte of a character
            ++m_here.column;
    }

    std::unique_ptr<csv_parser, ParserEnd> m_parser;
    std::vector<CsvRecord> m_records;
    CsvRecord m_record;
    TextPosition m_here{1, 1};
    TextPosition m_start{1, 1};
    bool m_isAtStart = true;
    char m_last = 0;
};

} // namespace

Result<std::vector<CsvRecord>, CsvError> readCsv(std::string_view utf8, char separator)
{
    return Reader(separator).read(utf8);
}

std::string quotedCsvField(std::string_view text)
{
    std::string field(csv_write(nullptr, 0, text.data(), text.size()), '\0');
    csv_write(field.data(), field.size(), text.data(), text.size());
    return field;
}

} // namespace vocalith
