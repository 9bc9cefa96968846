#include "tests/app/overlay/DictationStage.h"

namespace vocalith::test {
namespace {

using namespace std::chrono_literals;

/// The trivial engine: returns fixed text.
class ScriptedEngine final : public TranscriptionService {
public:
    ScriptedEngine(EngineScript& script, TranscriptionModelID model, Clock& clock)
        : m_script(script), m_model(std::move(model)), m_clock(clock)
    {
        m_script.textEvents = &textEvents();
    }
    ~ScriptedEngine() override { m_script.textEvents = nullptr; }

    TranscriptionModelID modelId() const override { return m_model; }

    Task<Result<void, TranscriptionError>> start() override
    {
        ++m_script.starts;
        if (m_script.holdsStart) {
            const auto held = co_await sleepFor(m_clock, 1h);
            if (!held)
                co_return failure(TranscriptionError{TranscriptionError::Kind::cancelled, {}});
        }
        if (m_script.startError)
            co_return failure(*m_script.startError);
        co_return Result<void, TranscriptionError>();
    }

    Task<Result<TranscriptionData, TranscriptionError>> transcribe(std::filesystem::path recording,
                                                                   ProgressHandler) override
    {
        m_script.transcribed.push_back(recording);
        if (m_script.holdsTranscription) {
            const auto held = co_await sleepFor(m_clock, 1h);
            if (!held)
                co_return failure(TranscriptionError{TranscriptionError::Kind::cancelled, {}});
        }
        if (m_script.transcribeError)
            co_return failure(*m_script.transcribeError);
        TranscriptionData transcript{m_model, {}};
        transcript.segments.push_back({Uuid::random(), m_script.text, 0, 1, std::nullopt});
        co_return transcript;
    }

private:
    EngineScript& m_script;
    const TranscriptionModelID m_model;
    Clock& m_clock;
};

} // namespace

Task<Result<TextDestination, TextOutputError>> RecordedTextOutput::deliver(std::string text, ActionMode)
{
    ++asked;
    if (holds) {
        const auto held = co_await sleepFor(m_clock, 1h);
        if (!held)
            co_return failure(TextOutputError{"cancelled", "nowhere"});
    }
    delivered.push_back(std::move(text));
    if (error)
        co_return failure(*error);
    co_return TextDestination::application;
}

DictationStage::DictationStage()
    : session(
          [this](const TranscriptionModelID& model,
                 TranscriptionSource) -> Result<std::unique_ptr<TranscriptionService>, TranscriptionError> {
              engine.madeFor.push_back(model);
              if (engine.factoryError)
                  return failure(*engine.factoryError);
              return std::make_unique<ScriptedEngine>(engine, model, clock);
          },
          pipeline, storage, log.logger()),
      configuration(
          [this]() -> Result<DictationConfiguration, std::string> {
              DictationConfiguration loaded;
              loaded.shortcuts = {{journalShortcut, {0, VoiceJournal{}}}, {promptShortcut, {1, prompt}}};
              if (forgetPromptShortcut)
                  loaded.shortcuts.pop_back();
              loaded.prompts = numberedPrompts;
              for (const auto& numbered : numberedPrompts)
                  loaded.shortcuts.push_back({numbered.id, {2, numbered}});
              loaded.defaultModel = PredefinedModelID::tiny;
              return loaded;
          },
          log.logger()),
      overlay({notifier, recorder, session, configuration, feedback, history, clock, analytics, notices, display,
               &pasteboard},
              log.logger())
{}

DictationStage::~DictationStage()
{
    await(overlay.shutDown());
}

void DictationStage::speak(std::chrono::milliseconds length)
{
    runUntil([this] { return input.capture() && input.capture()->isAlive(); });
    drainMainThread();
    input.capture()->pushSilence(length);
}

const DictationOutcome& DictationStage::waitForOutcome()
{
    ++m_awaitedOutcomes;
    runUntil([&] { return display.outcomes.size() >= m_awaitedOutcomes; });
    return display.outcomes.back();
}

std::vector<HistoryEntry> DictationStage::historyEntries()
{
    const auto page = await(history.store()->page(HistoryPageRequest()));
    return page ? page->entries : std::vector<HistoryEntry>();
}

std::size_t DictationStage::recordingsOnDisk() const
{
    const auto recordings = folder / "VocalithRecordings";
    if (!std::filesystem::exists(recordings))
        return 0;
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(recordings))
        count += entry.path().extension() == ".wav";
    return count;
}

} // namespace vocalith::test
