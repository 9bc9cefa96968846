#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace spdlog {
class logger;
}

namespace vocalith {

enum class LogLevel { debug, info, warning, error };

/// A service's own way into the log: copies share one destination, and any thread may write. A default-made logger
/// drops everything.
class Logger {
public:
    Logger() = default;
    explicit Logger(std::shared_ptr<spdlog::logger> logger) : m_logger(std::move(logger)) {}

    void debug(std::string_view line) const { write(LogLevel::debug, line); }
    void info(std::string_view line) const { write(LogLevel::info, line); }
    void warning(std::string_view line) const { write(LogLevel::warning, line); }
    void error(std::string_view line) const { write(LogLevel::error, line); }

private:
    void write(LogLevel level, std::string_view line) const;
    std::shared_ptr<spdlog::logger> m_logger;
};

/// Where log lines go. Makes one logger per category; the loggers may outlive it.
class LogService {
public:
    using Listener = std::function<void(LogLevel, std::string_view category, std::string_view line)>;

    /// A file of at most 1 MB and three older ones beside it, readable by their owner only. A file that cannot be
    /// written costs the log, never the program.
    static LogService toFile(const std::filesystem::path& file);
    /// Every line goes to `listener`, on the thread that wrote it.
    static LogService toListener(Listener listener);

    ~LogService();
    LogService(LogService&&) noexcept;
    LogService& operator=(LogService&&) noexcept;

    Logger logger(std::string category) const;

private:
    struct Sink;
    explicit LogService(std::unique_ptr<Sink> sink);
    std::unique_ptr<Sink> m_sink;
};

} // namespace vocalith
