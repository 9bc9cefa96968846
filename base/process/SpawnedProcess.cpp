#include "base/process/SpawnedProcess_p.h"

#include "base/process/ProcessEnd.h"
#include "base/process/ProcessStart.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace vocalith {
namespace {

std::string reason(int error)
{
    return std::generic_category().message(error);
}

/// A pipe whose ends no other child inherits.
struct Pipe {
    FileDescriptor readingEnd;
    FileDescriptor writingEnd;
};

/// Where the standard streams are closed, a new pipe would take their numbers and be in its own way in the child.
FileDescriptor aboveStandardStreams(FileDescriptor file)
{
    if (file.get() > STDERR_FILENO)
        return file;
    return FileDescriptor(::fcntl(file.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

Result<Pipe, std::string> makePipe()
{
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return failure(reason(errno));
    FileDescriptor readingEnd(ends[0]);
    FileDescriptor writingEnd(ends[1]);
    Pipe pipe{aboveStandardStreams(std::move(readingEnd)), aboveStandardStreams(std::move(writingEnd))};
    if (!pipe.readingEnd.isOpen() || !pipe.writingEnd.isOpen())
        return failure(reason(errno));
    return pipe;
}

std::vector<std::string> words(const std::string& program, const std::vector<std::string>& arguments)
{
    std::vector<std::string> all{program};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
}

bool canBeWords(const std::vector<std::string>& all)
{
    for (const auto& word : all) {
        if (word.find('\0') != std::string::npos)
            return false;
    }
    return true;
}

} // namespace

Result<SpawnedProcess, std::string> spawnProcess(const std::string& program, const std::vector<std::string>& arguments)
{
    const auto all = words(program, arguments);
    if (!canBeWords(all))
        return failure(program + ": An argument contains a NUL character");
    auto input = makePipe();
    auto output = makePipe();
    auto error = makePipe();
    for (const auto* pipe : {&input, &output, &error}) {
        if (!*pipe)
            return failure(pipe->error());
    }
    ProcessStart start;
    start.connect(input->readingEnd.get(), STDIN_FILENO);
    start.connect(output->writingEnd.get(), STDOUT_FILENO);
    start.connect(error->writingEnd.get(), STDERR_FILENO);
    SpawnedProcess process;
    const int refused = start.spawn(process.id, all);
    if (refused != 0)
        return failure(program + ": " + reason(refused));
    process.running = watchProcess(process.id);
    if (!process.running.isOpen()) { // a kernel before Linux 5.3, or no descriptor left
        const int unwatched = errno;
        ::kill(-process.id, SIGKILL);
        reapProcess(process.id);
        return failure(program + " cannot be watched: " + reason(unwatched));
    }
    process.input = std::move(input->writingEnd);
    process.output = std::move(output->readingEnd);
    process.error = std::move(error->readingEnd);
    return process;
}

} // namespace vocalith
