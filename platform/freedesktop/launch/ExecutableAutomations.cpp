#include "platform/freedesktop/launch/ExecutableAutomations.h"

#include "platform/freedesktop/launch/DetachedPrograms_p.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include <unistd.h>

namespace vocalith {

namespace fs = std::filesystem;
using Kind = AutomationError::Kind;
using Outcome = Result<void, AutomationError>;

struct ExecutableAutomations::File {
    fs::path path;
    bool isExecutable = false;
};

namespace {

constexpr Duration kStarting = std::chrono::seconds(1);

Outcome outcomeOf(const ProgramState& state, const std::string& name)
{
    if (state.isCancelled)
        return failure(AutomationError{Kind::cancelled});
    if (state.exitCode.value_or(0) == 0)
        return {};
    return failure(AutomationError{
        Kind::failed, fmt::format("The shortcut \"{}\" ended at once with exit code {}{}", name, *state.exitCode,
                                  state.complaint.empty() ? " and does not say why." : ": " + state.complaint)});
}

std::string whyNotStarted(const fs::path& file, const std::error_code& error)
{
    if (error == std::errc::no_such_file_or_directory) // the file is there
        return fmt::format("The program that its first line names is missing. Mend \"{}\".", file.string());
    return error.message() + ".";
}

} // namespace

ExecutableAutomations::ExecutableAutomations(fs::path folder, Clock& clock)
    : m_folder(std::move(folder)), m_programs(std::make_unique<DetachedPrograms>(clock))
{}

ExecutableAutomations::~ExecutableAutomations() = default;

/// The files that are not hidden, sorted by name.
std::vector<ExecutableAutomations::File> ExecutableAutomations::files() const
{
    std::vector<File> found;
    std::error_code error;
    for (auto entry = fs::directory_iterator(m_folder, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        std::error_code unknown;
        if (entry->is_regular_file(unknown) && !entry->path().filename().native().starts_with('.'))
            found.push_back({entry->path(), ::access(entry->path().c_str(), X_OK) == 0});
    }
    std::ranges::sort(found, {}, &File::path);
    return found;
}

std::vector<std::string> ExecutableAutomations::names() const
{
    std::vector<std::string> found;
    for (const auto& file : files()) {
        if (file.isExecutable)
            found.push_back(file.path.filename().string());
    }
    return found;
}

/// The file of exactly that name, else an executable one with an extension, else one that is not executable.
Result<ExecutableAutomations::File, AutomationError> ExecutableAutomations::find(const std::string& name) const
{
    if (name.empty() || name.find_first_of(std::string_view("/\0", 2)) != std::string::npos || name.front() == '.')
        return failure(AutomationError{
            Kind::notFound, fmt::format("\"{}\" cannot be the name of a shortcut. It is the name of an executable file "
                                        "in {}, without a folder.",
                                        name, m_folder.string())});
    const auto all = files();
    auto found = std::ranges::find(all, name, [](const auto& file) { return file.path.filename().string(); });
    if (found == all.end())
        found = std::ranges::find_if(
            all, [&](const auto& file) { return file.isExecutable && file.path.stem().string() == name; });
    if (found == all.end())
        found = std::ranges::find(all, name, [](const auto& file) { return file.path.stem().string(); });
    if (found == all.end())
        return failure(AutomationError{Kind::notFound, notFound(name)});
    if (!found->isExecutable)
        return failure(AutomationError{Kind::failed, fmt::format("The shortcut \"{}\" is not executable. Make it so "
                                                                 "with: chmod +x \"{}\"",
                                                                 name, found->path.string())});
    return *found;
}

std::string ExecutableAutomations::notFound(const std::string& name) const
{
    const auto all = names();
    const auto others = all.empty() ? std::string() : fmt::format(" There are: {}.", fmt::join(all, ", "));
    return fmt::format("There is no shortcut \"{}\".{} Put an executable file of that name into {}", name, others,
                       m_folder.string());
}

Task<Outcome> ExecutableAutomations::run(std::string name)
{
    const auto file = find(name);
    if (!file)
        co_return failure(file.error());
    std::vector<std::string> words{file->path.string()};
    const auto state = co_await m_programs->run(std::move(words), kStarting);
    if (!state)
        co_return failure(AutomationError{Kind::failed, fmt::format("The shortcut \"{}\" cannot be started. {}", name,
                                                                    whyNotStarted(file->path, state.error()))});
    co_return outcomeOf(*state, name);
}

} // namespace vocalith
