#include "platform/freedesktop/ClipboardProgram.h"

#include "base/Clock.h"
#include "base/OneShot.h"
#include "base/Text.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryFile>

#include <unistd.h>

namespace vocalith {

using Kind = ClipboardError::Kind;

struct ClipboardProgram::Program {
    QString path;
    QStringList arguments;

    std::string name() const { return path.section(QLatin1Char('/'), -1).toStdString(); }
};

namespace {

constexpr std::chrono::seconds kLimit(5);

bool hasDisplay(const char* variable)
{
    return !qEnvironmentVariableIsEmpty(variable);
}

/// Why the program failed, of which it may have said something.
ClipboardError failed(const std::string& name, bool isLate, const std::string& complaint)
{
    if (isLate)
        return {Kind::failed, name + " does not answer."};
    return {Kind::failed, complaint.empty() ? name + " failed and does not say why." : name + " says: " + complaint};
}

} // namespace

std::vector<ClipboardProgram::Program> ClipboardProgram::installed()
{
    std::vector<Program> found;
    const auto add = [&](const char* display, const char* name, const QStringList& arguments) {
        const auto path = hasDisplay(display) ? QStandardPaths::findExecutable(QString::fromLatin1(name)) : QString();
        if (!path.isEmpty())
            found.push_back({path, arguments});
    };
    // Told the type, wl-copy need not guess it from the content.
    add("WAYLAND_DISPLAY", "wl-copy", {"--type", "text/plain;charset=utf-8"});
    add("DISPLAY", "xclip", {"-selection", "clipboard", "-in"});
    add("DISPLAY", "xsel", {"--clipboard", "--input"});
    return found;
}

Task<Result<void, ClipboardError>> ClipboardProgram::write(std::string text)
{
    const bool isWayland = hasDisplay("WAYLAND_DISPLAY");
    if (!isWayland && !hasDisplay("DISPLAY"))
        co_return failure(ClipboardError{Kind::noDesktop});
    ClipboardError error{Kind::noProgram, isWayland ? "wl-clipboard" : "xclip"};
    for (auto& program : installed()) {
        const auto copied = co_await copyWith(program, text);
        if (copied || copied.error().kind == Kind::cancelled)
            co_return copied;
        error = copied.error();
    }
    co_return failure(error);
}

Task<Result<void, ClipboardError>> ClipboardProgram::copyWith(Program program, std::string text)
{
    OneShot<bool> ended;
    const auto resolve = ended.resolver();
    // What it complains about goes into a file: a pipe would break under the copy of itself that stays behind.
    QTemporaryFile complaints;
    complaints.open();
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(complaints.fileName());
    process.setChildProcessModifier([] { ::setsid(); }); // it outlives the terminal
    QObject::connect(&process, &QProcess::finished, &process, [&process, resolve](int code) {
        resolve(process.exitStatus() == QProcess::NormalExit && code == 0);
    });
    QObject::connect(&process, &QProcess::errorOccurred, &process, [resolve](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            resolve(false);
    });
    process.start(program.path, program.arguments);
    process.write(text.data(), static_cast<qint64>(text.size()));
    process.closeWriteChannel();
    bool isLate = false;
    const auto limit = m_clock.after(kLimit, [&] {
        isLate = true;
        process.kill();
    });
    const auto outcome = co_await ended;
    if (!outcome) {
        process.kill();
        process.waitForFinished();
        co_return failure(ClipboardError{Kind::cancelled});
    }
    if (*outcome)
        co_return Result<void, ClipboardError>();
    const auto complaint = cleanText(complaints.readAll().toStdString(), ' ');
    co_return failure(failed(program.name(), isLate, complaint));
}

} // namespace vocalith
