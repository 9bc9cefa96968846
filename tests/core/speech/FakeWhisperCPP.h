#pragma once

#include "core/speech/whisper/WhisperCPPDependencyProtocol.h"

#include <atomic>
#include <mutex>
#include <vector>

namespace vocalith::test {

/// Stands in for the library: every model says one segment per buffer, or waits there until it is cancelled.
class FakeWhisperCPPType final : public WhisperCPPFactory {
public:
    struct Load {
        std::filesystem::path modelFile;
        TranscriptionSource source;
        WhisperSettings settings;
    };

    std::atomic<bool> waitsForCancel = false;
    std::atomic<bool> isSilent = false;
    std::atomic<int> loaded = 0; ///< models in memory now
    std::atomic<int> mostLoaded = 0;
    std::atomic<int> decoding = 0;

    std::vector<Load> loads() const
    {
        const std::lock_guard lock(m_mutex);
        return m_loads;
    }
    /// The lengths of the buffers that were decoded.
    std::vector<std::size_t> buffers() const
    {
        const std::lock_guard lock(m_mutex);
        return m_buffers;
    }

    Result<std::unique_ptr<WhisperCPPDependencyProtocol>, TranscriptionError>
    create(const std::filesystem::path& modelFile, bool /*useGpu*/, const TranscriptionModelID& /*modelId*/,
           TranscriptionSource source, const WhisperSettings& settings) override
    {
        const std::lock_guard lock(m_mutex);
        m_loads.push_back({modelFile, source, settings});
        return std::make_unique<Model>(*this);
    }

private:
    class Model final : public WhisperCPPDependencyProtocol {
    public:
        explicit Model(FakeWhisperCPPType& type) : m_type(type)
        {
            m_type.mostLoaded = std::max(m_type.mostLoaded.load(), ++m_type.loaded);
        }
        ~Model() override { --m_type.loaded; }

        Result<WhisperTranscript, TranscriptionError> transcribe(std::span<const float> samples,
                                                                 const ProgressHandler& progress) override
        {
            m_isCancelled = false;
            {
                const std::lock_guard lock(m_type.m_mutex);
                m_type.m_buffers.push_back(samples.size());
            }
            progress(0);
            ++m_type.decoding;
            while (m_type.waitsForCancel && !m_isCancelled)
                m_isCancelled.wait(false);
            --m_type.decoding;
            if (m_isCancelled)
                return failure(TranscriptionError{TranscriptionError::Kind::cancelled, {}});
            progress(50);
            progress(100);
            if (m_type.isSilent)
                return WhisperTranscript{};
            return WhisperTranscript{"said", {{Uuid::random(), "said", 0, 1, std::nullopt}}};
        }
        void cancel() override
        {
            m_isCancelled = true;
            m_isCancelled.notify_all();
        }
        void release() override {}

    private:
        FakeWhisperCPPType& m_type;
        std::atomic<bool> m_isCancelled = false;
    };

    mutable std::mutex m_mutex;
    std::vector<Load> m_loads;
    std::vector<std::size_t> m_buffers;
};

} // namespace vocalith::test
