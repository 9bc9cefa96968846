#pragma once

#include "platform/pulse/PulseConnection_p.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vocalith {

struct PulseSource {
    std::string name;
    std::string description;
    bool isMonitor = false;
    std::string monitorOf; ///< the sink that it monitors
    bool isMuted = false;
};

/// What the server offers at one moment. All decisions about devices are made on this.
struct PulseServerState {
    std::string serverName;
    std::string serverVersion;
    std::string defaultSource;
    std::string defaultSink;
    std::vector<PulseSource> sources;

    const PulseSource* source(const std::string& name) const;
    /// The sources that are no monitors, the default first.
    std::vector<AudioDevice> microphones() const;
    /// Which source serves the request, or why none does.
    Result<PulseSource, AudioInputError> sourceFor(const AudioInputRequest& request) const;
};

/// Asks a connected server for its state, once. Destroying it drops the answer. The loop's thread.
class PulseSurvey {
public:
    /// Nothing, when the server refused to say; the connection's last error tells why. `done` may destroy the survey.
    using Done = std::function<void(std::optional<PulseServerState>)>;

    PulseSurvey(const PulseConnection& connection, Done done);
    PulseSurvey(const PulseSurvey&) = delete;
    PulseSurvey& operator=(const PulseSurvey&) = delete;
    ~PulseSurvey() = default;

private:
    void serverAnswered(const pa_server_info* info);
    void sourceAnswered(const pa_source_info* info, int end);
    void finish(bool good);

    PulseServerState m_state;
    Done m_done;
    PulseHandle<pa_operation> m_askingServer;
    PulseHandle<pa_operation> m_askingSources;
};

/// One question to the server, connection included. The asker holds it and closes it on the loop's thread in the end.
class PulseInquiry final : public PulseConnection::Client {
public:
    using Answer = std::function<void(Result<PulseServerState, AudioInputError>)>;

    PulseInquiry(PulseServer& server, Answer answer) : m_server(server), m_answer(std::move(answer)) {}

    void start();
    void close();

private:
    void connected() override;
    void disconnected(const AudioInputError& error) override;
    void finish(Result<PulseServerState, AudioInputError> answer);

    PulseServer& m_server;
    Answer m_answer;
    std::shared_ptr<PulseConnection> m_connection;
    PulseTimer m_limit;
    std::optional<PulseSurvey> m_survey;
};

/// The server's state, for a coroutine; cancelled, it yields an error of kind `failed`.
Task<Result<PulseServerState, AudioInputError>> askServer(PulseServer& server);

} // namespace vocalith
