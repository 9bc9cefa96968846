#include "base/FolderWatcher.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <map>
#include <set>

namespace vocalith {
namespace {

// Not each single write to a file: most are followed by others, and all by the end of the writing.
constexpr std::uint32_t kEvents =
    IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

} // namespace

class FolderWatcher::Impl {
public:
    explicit Impl(FolderWatcher& watcher) : m_watcher(watcher), m_inotify(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        if (m_inotify < 0 || !QCoreApplication::instance())
            return;
        m_notifier = std::make_unique<QSocketNotifier>(m_inotify, QSocketNotifier::Read);
        QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] { tell(); });
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl()
    {
        m_notifier.reset();
        if (m_inotify >= 0)
            ::close(m_inotify);
    }

    bool watch(const std::filesystem::path& folder)
    {
        if (!m_notifier)
            return false;
        const int watch = ::inotify_add_watch(m_inotify, folder.c_str(), kEvents);
        if (watch >= 0)
            m_folders.insert_or_assign(watch, folder);
        return watch >= 0;
    }

    void unwatch(const std::filesystem::path& folder)
    {
        std::erase_if(m_folders, [&](const auto& entry) {
            return entry.second == folder && (::inotify_rm_watch(m_inotify, entry.first), true);
        });
    }

    bool isWatching(const std::filesystem::path& folder) const
    {
        for (const auto& [watch, name] : m_folders) {
            if (name == folder)
                return true;
        }
        return false;
    }

private:
    void tell()
    {
        std::set<std::filesystem::path> touched;
        alignas(inotify_event) std::array<char, 16384> buffer;
        for (;;) {
            const auto count = ::read(m_inotify, buffer.data(), buffer.size());
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                break;
            for (const char* at = buffer.data(); at < buffer.data() + count;) {
                const auto& event = *reinterpret_cast<const inotify_event*>(at);
                note(event, touched);
                at += sizeof event + event.len;
            }
        }
        for (const auto& folder : touched)
            m_watcher.changed.emit(folder);
    }

    void note(const inotify_event& event, std::set<std::filesystem::path>& touched)
    {
        if ((event.mask & IN_Q_OVERFLOW) != 0U) {
            for (const auto& [watch, name] : m_folders)
                touched.insert(name);
            return;
        }
        const auto found = m_folders.find(event.wd);
        if (found == m_folders.end())
            return;
        touched.insert(found->second);
        // A folder that was moved is not the one of that name any more.
        if ((event.mask & IN_MOVE_SELF) != 0U)
            ::inotify_rm_watch(m_inotify, event.wd);
        if ((event.mask & (IN_IGNORED | IN_MOVE_SELF)) != 0U)
            m_folders.erase(found);
    }

    FolderWatcher& m_watcher;
    const int m_inotify;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::map<int, std::filesystem::path> m_folders;
};

FolderWatcher::FolderWatcher() : m_impl(std::make_unique<Impl>(*this))
{}

FolderWatcher::~FolderWatcher() = default;

bool FolderWatcher::watch(const std::filesystem::path& folder)
{
    return m_impl->watch(folder);
}

void FolderWatcher::unwatch(const std::filesystem::path& folder)
{
    m_impl->unwatch(folder);
}

bool FolderWatcher::isWatching(const std::filesystem::path& folder) const
{
    return m_impl->isWatching(folder);
}

} // namespace vocalith
