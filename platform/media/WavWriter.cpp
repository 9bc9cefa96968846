#include "platform/media/WavWriter_p.h"

#include "platform/media/SamplePieces_p.h"

#include <cstdio>
#include <string_view>
#include <vector>

namespace vocalith::media {
namespace {

constexpr std::uint32_t kHeaderSize = 44;

void append(std::vector<std::uint8_t>& bytes, std::uint32_t value, int size)
{
    for (int i = 0; i < size; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

void append(std::vector<std::uint8_t>& bytes, std::string_view text)
{
    bytes.insert(bytes.end(), text.begin(), text.end());
}

} // namespace

WavWriter::WavWriter(OutputFile file, std::uint32_t mostBytes) : m_file(std::move(file)), m_mostBytes(mostBytes)
{
    writeHeader();
}

bool WavWriter::writeHeader()
{
    std::vector<std::uint8_t> header;
    append(header, "RIFF");
    append(header, kHeaderSize - 8 + m_bytes, 4);
    append(header, "WAVEfmt ");
    append(header, 16, 4);
    append(header, 1, 2); // PCM
    append(header, 1, 2); // one channel
    append(header, kConvertedRate, 4);
    append(header, kConvertedRate * 2, 4); // bytes a second
    append(header, 2, 2);                  // bytes a sample
    append(header, 16, 2);                 // bits a sample
    append(header, "data");
    append(header, m_bytes, 4);
    return m_file.write(header);
}

bool WavWriter::write(std::span<const float> samples)
{
    std::vector<std::uint8_t> bytes;
    bytes.reserve(samples.size() * 2);
    for (const float sample : samples)
        append(bytes, static_cast<std::uint16_t>(toInt16(sample)), 2);
    m_full = m_full || bytes.size() > m_mostBytes - m_bytes;
    if (m_full || !m_file.write(bytes))
        return false;
    m_bytes += static_cast<std::uint32_t>(bytes.size());
    return true;
}

Result<void, std::string> WavWriter::finish()
{
    if (m_full)
        return failure(std::string("the recording is longer than a WAV file can hold"));
    m_file.seek(0, SEEK_SET);
    writeHeader();
    return m_file.finish();
}

} // namespace vocalith::media
