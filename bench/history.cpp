// The promises of the history, each on 100,000 entries over three years:
//  - the first page after a cold start, and any later one, takes 1/100 of what reading all files takes;
//  - a search takes 1/100 of `grep -ril` over the folder and finds the same entries;
//  - keeping an entry takes at most 1.5 times a bare write, flush and rename of its bytes;
//  - memory does not grow with the number of entries;
//  - the index is made again in at most three times the time that reading all entries takes, and in proportion to their
//    number.

#include "base/AtomicFile.h"
#include "bench/HistoryCorpus.h"
#include "bench/Median.h"
#include "core/storage/history/HistoryStore.h"
#include "core/storage/history/archive/HistoryArchive.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <sstream>

using namespace vocalith;
namespace fs = std::filesystem;

namespace {

constexpr int kEntries = 100'000;
constexpr int kFewEntries = 10'000;

double seconds(const std::function<void()>& work)
{
    const auto before = std::chrono::steady_clock::now();
    work();
    return toSeconds(std::chrono::steady_clock::now() - before);
}

double medianSeconds(int runs, const std::function<void()>& work)
{
    std::vector<double> times;
    for (int i = 0; i < runs; ++i)
        times.push_back(seconds(work));
    return bench::median(std::move(times));
}

bool verdict(const char* name, double ratio, double limit, const std::string& detail)
{
    std::printf("%s: ratio %.4f (limit %.4f); %s\n", name, ratio, limit, detail.c_str());
    std::fflush(stdout);
    return ratio <= limit;
}

HistoryPlaces placesIn(const fs::path& folder)
{
    return {folder / "History", folder / "VocalithRecordings", folder / "history.index"};
}

/// A history of the benchmark's own with an index that knows all of it.
class GeneratedHistory {
public:
    explicit GeneratedHistory(int count)
    {
        std::string name = (fs::temp_directory_path() / "vocalith-bench-history-XXXXXX").string();
        m_folder = ::mkdtemp(name.data());
        bench::HistoryCorpus::write(places().rootURL, count);
    }
    GeneratedHistory(const GeneratedHistory&) = delete;
    GeneratedHistory& operator=(const GeneratedHistory&) = delete;
    ~GeneratedHistory()
    {
        std::error_code ignored;
        fs::remove_all(m_folder, ignored);
    }

    const fs::path& folder() const { return m_folder; }
    HistoryPlaces places() const { return placesIn(m_folder); }

    /// Makes the index anew.
    double rebuild() const
    {
        for (const auto* suffix : {"", "-wal", "-shm"})
            fs::remove(places().indexFile.string() + suffix);
        return seconds([this] { refresh(places()); });
    }

    static void refresh(const HistoryPlaces& places)
    {
        HistoryArchive archive(places, {});
        auto pass = archive.beginRefresh(std::nullopt);
        while (pass && !archive.refreshSome(*pass, std::chrono::milliseconds(40))) {
        }
    }

private:
    fs::path m_folder;
};

template <class Visit>
void forEachFile(const fs::path& root, const Visit& visit)
{
    const HistoryFolder folder(root);
    const auto days = folder.days();
    for (const auto& day : days.value_or(std::vector<std::string>())) {
        for (const auto& file : folder.files(day))
            visit(folder, file.path);
    }
}

/// What reading all files takes: opened, read and closed, and nothing made of them.
double readingAll(const GeneratedHistory& history)
{
    return medianSeconds(3, [&] {
        forEachFile(history.places().rootURL, [](const HistoryFolder& folder, const std::string& path) {
            static_cast<void>(readWholeFile(folder.absolute(path)));
        });
    });
}

/// The same with the entries made of them.
double decodingAll(const GeneratedHistory& history)
{
    return seconds([&] {
        forEachFile(history.places().rootURL,
                    [](const HistoryFolder& folder, const std::string& path) { static_cast<void>(folder.read(path)); });
    });
}

bool pages(const GeneratedHistory& history, double reading)
{
    constexpr double kLimit = 0.01;
    const double first = medianSeconds(5, [&] {
        HistoryArchive archive(history.places(), {});
        archive.page({});
    });
    HistoryArchive archive(history.places(), {});
    HistoryPageRequest request;
    std::vector<double> later;
    for (;;) {
        HistoryPage page;
        later.push_back(seconds([&] { page = archive.page(request); }));
        if (!page.next)
            break;
        request.after = page.next;
    }
    std::sort(later.begin(), later.end());
    const double slow = later[later.size() * 99 / 100];
    const auto detail = fmt::format("{:.2f} ms, reading all files {:.2f} s", first * 1e3, reading);
    const auto laterDetail = fmt::format("the slowest of 99 in 100 of {} pages {:.2f} ms, median {:.2f} ms",
                                         later.size(), slow * 1e3, later[later.size() / 2] * 1e3);
    const bool isFirstQuick = verdict("history_first_page", first / reading, kLimit, detail);
    return verdict("history_later_page", slow / reading, kLimit, laterDetail) && isFirstQuick;
}

std::set<std::string> grep(const std::string& query, const fs::path& root)
{
    std::set<std::string> found;
    const auto command = fmt::format("LC_ALL=C.UTF-8 grep -ril -- '{}' '{}'", query, root.string());
    FILE* output = ::popen(command.c_str(), "r");
    std::string line;
    for (int c = std::fgetc(output); c != EOF; c = std::fgetc(output)) {
        if (c != '\n') {
            line += static_cast<char>(c);
            continue;
        }
        found.insert(fs::path(line).stem());
        line.clear();
    }
    ::pclose(output);
    return found;
}

std::set<std::string> allMatches(HistoryArchive& archive, HistoryPageRequest request)
{
    std::set<std::string> found;
    do {
        const auto page = archive.page(request);
        for (const auto& entry : page.entries)
            found.insert(entry.id.toString());
        request.after = page.next;
    } while (request.after);
    return found;
}

/// The first page of what is found, as a user sees it; the pages together are what grep finds.
bool searches(const GeneratedHistory& history)
{
    constexpr double kLimit = 0.01;
    bool isGood = true;
    double worst = 0;
    std::string detail;
    for (const std::string query :
         {"n99999", "peculiar", "quarterly", "Zahnärztin", "МОСКВА", "谢谢大家", "budget hospital"}) {
        HistoryArchive archive(history.places(), {});
        archive.page({});
        HistoryPageRequest request;
        request.filter.searchQuery = query;
        const double page = medianSeconds(5, [&] { archive.page(request); });
        std::set<std::string> expected;
        const double yardstick = seconds([&] { expected = grep(query, history.places().rootURL); });
        const auto found = allMatches(archive, request);
        if (found != expected) {
            std::printf("history_search: \"%s\" finds %zu entries, grep %zu\n", query.c_str(), found.size(),
                        expected.size());
            isGood = false;
        }
        worst = std::max(worst, page / yardstick);
        detail +=
            fmt::format("{} (in {} entries): {:.1f} ms, grep {:.2f} s; ", query, found.size(), page * 1e3, yardstick);
    }
    return verdict("history_search", worst, kLimit, detail) && isGood;
}

/// What keeping a file takes at the least: aside, flushed, renamed, and the folder flushed, without which a power cut
/// could still undo the renaming.
void bareWrite(const fs::path& file, const std::string& content)
{
    const auto aside = file.string() + ".new";
    const int descriptor = ::open(aside.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (::write(descriptor, content.data(), content.size()) != static_cast<ssize_t>(content.size()))
        std::abort();
    ::fsync(descriptor);
    ::close(descriptor);
    ::rename(aside.c_str(), file.c_str());
    const int folder = ::open(file.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ::fsync(folder);
    ::close(folder);
}

bool upserts(const GeneratedHistory& history)
{
    constexpr double kLimit = 1.5;
    constexpr int kRounds = 200;
    HistoryArchive archive(history.places(), {});
    archive.page({});
    bench::HistoryCorpus corpus;
    const auto bareFolder = history.folder() / "bare";
    fs::create_directories(bareFolder);
    std::vector<double> kept;
    std::vector<double> noted; // nobody waits for it
    std::vector<double> bare;
    for (int i = 0; i < kRounds; ++i) { // in turns, so that both meet the same disk
        auto entry = corpus.next();
        entry.id = Uuid::random();
        const auto content = dumpJson(toJson(entry), 2) + '\n';
        kept.push_back(seconds([&] { static_cast<void>(archive.write(entry)); }));
        noted.push_back(seconds([&] { archive.noteWritten(entry); }));
        bare.push_back(seconds([&] { bareWrite(bareFolder / entry.id.toString(), content); }));
    }
    const double ratio = bench::median(kept) / bench::median(bare);
    return verdict("history_upsert", ratio, kLimit,
                   fmt::format("{:.2f} ms, bare {:.2f} ms; the index is told afterwards in {:.2f} ms",
                               bench::median(kept) * 1e3, bench::median(bare) * 1e3, bench::median(noted) * 1e3));
}

/// The most memory that a process takes to look through that history, in kB.
double memoryOf(const GeneratedHistory& history, const char* self)
{
    const auto command = fmt::format("'{}' --look '{}'", self, history.folder().string());
    FILE* output = ::popen(command.c_str(), "r");
    long kilobytes = 0;
    if (std::fscanf(output, "%ld", &kilobytes) != 1)
        std::abort();
    ::pclose(output);
    return static_cast<double>(kilobytes);
}

int look(const fs::path& folder)
{
    GeneratedHistory::refresh(placesIn(folder));
    HistoryArchive archive(placesIn(folder), {});
    HistoryPageRequest request;
    for (int i = 0; i < 20; ++i)
        request.after = archive.page(request).next;
    request = {};
    request.filter.searchQuery = "quarterly";
    archive.page(request);
    request.filter.searchQuery = "会";
    archive.page(request);
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    std::printf("%ld\n", usage.ru_maxrss);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::string_view(argv[1]) == "--look")
        return look(argv[2]);

    const GeneratedHistory few(kFewEntries);
    const GeneratedHistory history(kEntries);
    const double readingFew = readingAll(few);
    const double reading = readingAll(history);
    const double decoding = decodingAll(history);
    const double rebuildingFew = few.rebuild();
    const double rebuilding = history.rebuild();

    bool isGood = pages(history, reading);
    isGood = searches(history) && isGood;
    isGood = upserts(history) && isGood;
    const double fewMemory = memoryOf(few, argv[0]);
    const double memory = memoryOf(history, argv[0]);
    isGood = verdict("history_memory", memory / fewMemory, 1.2,
                     fmt::format("{:.1f} MB for {} entries, {:.1f} MB for {}", memory / 1024, kEntries,
                                 fewMemory / 1024, kFewEntries)) &&
             isGood;
    isGood = verdict("history_rebuild", rebuilding / decoding, 3,
                     fmt::format("{:.1f} s; reading all entries {:.1f} s, the bare files {:.2f} s (ratio {:.1f})",
                                 rebuilding, decoding, reading, rebuilding / reading)) &&
             isGood;
    isGood = verdict("history_rebuild_linear", (rebuilding / kEntries) / (rebuildingFew / kFewEntries), 1.5,
                     fmt::format("{:.0f} us an entry of {}, {:.0f} us of {}; read {:.2f} s, {:.2f} s",
                                 rebuilding / kEntries * 1e6, kEntries, rebuildingFew / kFewEntries * 1e6, kFewEntries,
                                 reading, readingFew)) &&
             isGood;
    return isGood ? 0 : 1;
}
