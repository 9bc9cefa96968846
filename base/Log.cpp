#include "base/Log.h"

#include "base/AtomicFile.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/null_sink.h>
#include <spdlog/sinks/rotating_file_sink.h>

#include <sys/stat.h>

namespace vocalith {
namespace {

constexpr std::size_t kMaximumBytes = 1 << 20;
constexpr std::size_t kOlderFiles = 3;

spdlog::level::level_enum spdlogLevel(LogLevel level)
{
    switch (level) {
    case LogLevel::debug: return spdlog::level::debug;
    case LogLevel::info: return spdlog::level::info;
    case LogLevel::warning: return spdlog::level::warn;
    case LogLevel::error: return spdlog::level::err;
    }
    return spdlog::level::err;
}

LogLevel levelOf(spdlog::level::level_enum level)
{
    if (level <= spdlog::level::debug)
        return LogLevel::debug;
    if (level == spdlog::level::info)
        return LogLevel::info;
    return level == spdlog::level::warn ? LogLevel::warning : LogLevel::error;
}

class ListenerSink final : public spdlog::sinks::base_sink<std::mutex> {
public:
    explicit ListenerSink(LogService::Listener listener) : m_listener(std::move(listener)) {}

private:
    void sink_it_(const spdlog::details::log_msg& message) override
    {
        m_listener(levelOf(message.level), {message.logger_name.data(), message.logger_name.size()},
                   {message.payload.data(), message.payload.size()});
    }
    void flush_() override {}

    LogService::Listener m_listener;
};

spdlog::sink_ptr rotatingFile(const std::filesystem::path& file)
{
    try {
        if (!createPrivateFolder(file.parent_path()))
            return std::make_shared<spdlog::sinks::null_sink_mt>();
        spdlog::file_event_handlers handlers;
        handlers.after_open = [](const spdlog::filename_t&, std::FILE* stream) {
            fchmod(fileno(stream), S_IRUSR | S_IWUSR);
        };
        auto sink = std::make_shared<spdlog::sinks::rotating_file_sink_mt>(file.string(), kMaximumBytes, kOlderFiles,
                                                                           false, handlers);
        sink->set_pattern("%Y-%m-%dT%H:%M:%S.%e%z %-7l [%n] %v");
        return sink;
    } catch (const std::exception&) {
        return std::make_shared<spdlog::sinks::null_sink_mt>();
    }
}

} // namespace

void Logger::write(LogLevel level, std::string_view line) const
{
    if (m_logger)
        m_logger->log(spdlogLevel(level), spdlog::string_view_t(line.data(), line.size()));
}

struct LogService::Sink {
    spdlog::sink_ptr sink;
};

LogService::LogService(std::unique_ptr<Sink> sink) : m_sink(std::move(sink))
{}
LogService::~LogService() = default;
LogService::LogService(LogService&&) noexcept = default;
LogService& LogService::operator=(LogService&&) noexcept = default;

LogService LogService::toFile(const std::filesystem::path& file)
{
    return LogService(std::make_unique<Sink>(Sink{rotatingFile(file)}));
}

LogService LogService::toListener(Listener listener)
{
    return LogService(std::make_unique<Sink>(Sink{std::make_shared<ListenerSink>(std::move(listener))}));
}

Logger LogService::logger(std::string category) const
{
    auto logger = std::make_shared<spdlog::logger>(std::move(category), m_sink->sink);
    logger->set_level(spdlog::level::debug);
    logger->flush_on(spdlog::level::info);
    logger->set_error_handler([](const std::string&) {}); // a full disk must not spill onto the terminal
    return Logger(std::move(logger));
}

} // namespace vocalith
