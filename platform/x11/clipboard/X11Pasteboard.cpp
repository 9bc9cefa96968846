#include "platform/x11/clipboard/X11Pasteboard.h"

#include "platform/x11/X11Connection.h"
#include "platform/x11/clipboard/X11SelectionOwner_p.h"
#include "platform/x11/clipboard/X11SelectionReader_p.h"
#include "platform/x11/windows/X11Windows_p.h"

#include <fmt/format.h>

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/extensions/Xfixes.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace vocalith {
namespace {

/// What clipboard managers look for before they keep something: Klipper, CopyQ and others know the first one, the
/// second is the name that the convention was given elsewhere.
constexpr const char* kSecretHint = "x-kde-passwordManagerHint";
constexpr auto kHandOverPatience = std::chrono::seconds(2);
constexpr const char* kTransientType = "org.nspasteboard.TransientType";

PasteboardSnapshot::Payload payload(std::string bytes)
{
    return std::make_shared<const std::string>(std::move(bytes));
}

/// Nothing for a text that has other characters.
std::optional<std::string> latin1(const std::string& utf8)
{
    std::string bytes;
    for (std::size_t at = 0; at < utf8.size(); ++at) {
        const auto byte = static_cast<unsigned char>(utf8[at]);
        if (byte < 0x80) {
            bytes.push_back(utf8[at]);
            continue;
        }
        if ((byte != 0xC2 && byte != 0xC3) || at + 1 == utf8.size())
            return std::nullopt;
        const auto low = static_cast<unsigned char>(utf8[++at]) & 0x3FU;
        bytes.push_back(static_cast<char>(((byte & 3U) << 6U) | low));
    }
    return bytes;
}

X11SelectionContent textContent(X11Connection& connection, const std::string& text, bool isTransient)
{
    X11SelectionContent content;
    const auto add = [&](const char* target, const char* type, PasteboardSnapshot::Payload data) {
        content.push_back({connection.atom(target), connection.atom(type), 8, std::move(data)});
    };
    const auto utf8 = payload(text);
    add("UTF8_STRING", "UTF8_STRING", utf8);
    add("text/plain;charset=utf-8", "text/plain;charset=utf-8", utf8);
    add("TEXT", "UTF8_STRING", utf8);
    if (auto old = latin1(text))
        add("STRING", "STRING", payload(std::move(*old)));
    add("text/plain", "text/plain", utf8);
    if (isTransient) {
        add(kSecretHint, kSecretHint, payload("secret"));
        add(kTransientType, kTransientType, payload({}));
    }
    return content;
}

} // namespace

struct X11Pasteboard::State {
    State(X11Pasteboard& owner, X11Connection& used, Clock& clock, Logger log);
    ~State() { XDestroyWindow(connection.display(), window); }

    unsigned long makeWindow();
    void handle(const XEvent& event);
    void count();
    void served(unsigned long requestor, unsigned long target);
    PasteboardFetch::Reader readerOf(unsigned long requestor);
    Task<bool> savePrimary(std::shared_ptr<X11SelectionReader::Conversation> asked);
    PasteboardError error() const;
    void releasePrimary();
    void writeToPrimary(const std::string& text);
    PasteboardSnapshot asSnapshot(const X11SelectionReader::Content& content);
    X11SelectionContent asContent(const PasteboardSnapshot& snapshot);

    X11Pasteboard& pasteboard;
    X11Connection& connection;
    const Logger logger;
    X11Windows windows;
    const unsigned long window;
    X11SelectionOwner clipboard;
    X11SelectionOwner primary;
    X11SelectionReader reader;
    std::optional<X11SelectionContent> primaryBefore; ///< from a snapshot until the restore
    bool hasLooked = false; ///< a snapshot has seen whether the window in focus pastes from there
    std::int64_t changes = 0;
    int fixesEvent = 0;

    /// A snapshot names no property type; this is what the owner said, as long as the payload lives.
    struct Form {
        std::weak_ptr<const std::string> payload;
        unsigned long type;
        int format;
    };
    std::vector<Form> forms;
    Subscription events;
};

X11Pasteboard::State::State(X11Pasteboard& owner, X11Connection& used, Clock& clock, Logger log)
    : pasteboard(owner), connection(used), logger(std::move(log)), windows(used), window(makeWindow()),
      clipboard(used, clock, window, used.atom("CLIPBOARD")), primary(used, clock, window, XA_PRIMARY),
      reader(used, clock, window), events(used.event.subscribe([this](const XEvent& event) { handle(event); }))
{
    int error = 0;
    if (!XFixesQueryExtension(connection.display(), &fixesEvent, &error)) {
        logger.warning("The X server does not tell of changes of the clipboard");
        return;
    }
    int major = 2;
    int minor = 0;
    XFixesQueryVersion(connection.display(), &major, &minor);
    XFixesSelectSelectionInput(connection.display(), window, connection.atom("CLIPBOARD"),
                               XFixesSetSelectionOwnerNotifyMask | XFixesSelectionWindowDestroyNotifyMask |
                                   XFixesSelectionClientCloseNotifyMask);
}

unsigned long X11Pasteboard::State::makeWindow()
{
    XSetWindowAttributes attributes{};
    attributes.event_mask = PropertyChangeMask;
    const auto made = XCreateWindow(connection.display(), connection.root(), -1, -1, 1, 1, 0, 0, InputOnly, nullptr,
                                    CWEventMask, &attributes);
    windows.markAsOwn(made);
    return made;
}

void X11Pasteboard::State::handle(const XEvent& event)
{
    if (fixesEvent != 0 && event.type == fixesEvent + XFixesSelectionNotify) {
        if (!clipboard.isStale(event.xany.serial))
            count();
        return;
    }
    if (clipboard.handle(event)) {
        releasePrimary();
        if (fixesEvent == 0)
            count();
    }
    primary.handle(event);
}

void X11Pasteboard::State::count()
{
    ++changes;
    pasteboard.changed.emit();
}

void X11Pasteboard::State::served(unsigned long requestor, unsigned long target)
{
    const PasteboardFetch fetch{readerOf(requestor), connection.atomName(target)};
    pasteboard.fetched.emit(fetch);
}

PasteboardFetch::Reader X11Pasteboard::State::readerOf(unsigned long requestor)
{
    using Reader = PasteboardFetch::Reader;
    const int reading = windows.processId(requestor);
    if (windows.hasNoFocus()) // nobody's keys went anywhere, unless a window is only about to have it
        return reading != 0 && reading == windows.processId(windows.active()) ? Reader::unknown : Reader::other;
    const auto focus = windows.inputFocus();
    const int focused = focus == 0 ? 0 : windows.processId(focus);
    if (reading == 0 || focused == 0)
        return Reader::unknown;
    return reading == focused ? Reader::focusedApplication : Reader::other;
}

PasteboardError X11Pasteboard::State::error() const
{
    if (connection.isLost())
        return {PasteboardError::Kind::unavailable, "The connection to the X server is lost. Start Vocalith again."};
    return {PasteboardError::Kind::failed, "The X server gave it to another program."};
}

void X11Pasteboard::State::writeToPrimary(const std::string& text)
{
    if (!primaryBefore)
        return;
    const auto tell = [this](unsigned long requestor, unsigned long target) { served(requestor, target); };
    primary.own(textContent(connection, text, false), tell);
}

/// False when the wait was stopped.
Task<bool> X11Pasteboard::State::savePrimary(std::shared_ptr<X11SelectionReader::Conversation> asked)
{
    const auto content = co_await reader.read(std::move(asked));
    if (content)
        primaryBefore = content->forms;
    co_return content.has_value();
}

void X11Pasteboard::State::releasePrimary()
{
    const auto before = std::exchange(primaryBefore, std::nullopt);
    if (!primary.isOwner() || !before)
        return;
    if (before->empty())
        primary.disown();
    else
        primary.own(*before, {});
}

PasteboardSnapshot X11Pasteboard::State::asSnapshot(const X11SelectionReader::Content& content)
{
    std::erase_if(forms, [](const Form& form) { return form.payload.expired(); });
    PasteboardSnapshot snapshot;
    snapshot.isComplete = content.isComplete;
    PasteboardSnapshot::Item item;
    for (const auto& form : content.forms) {
        item.representations.push_back({connection.atomName(form.target), form.payload});
        forms.push_back({form.payload, form.type, form.format});
    }
    if (!item.representations.empty())
        snapshot.items.push_back(std::move(item));
    return snapshot;
}

X11SelectionContent X11Pasteboard::State::asContent(const PasteboardSnapshot& snapshot)
{
    X11SelectionContent content;
    for (const auto& item : snapshot.items) {
        for (const auto& representation : item.representations) {
            const auto target = connection.atom(representation.type);
            if (std::ranges::find(content, target, &X11SelectionForm::target) != content.end())
                continue;
            const auto known = std::ranges::find_if(
                forms, [&](const Form& form) { return form.payload.lock() == representation.payload; });
            const auto guessed = representation.type == "TEXT" ? connection.atom("UTF8_STRING") : target;
            content.push_back({target, known == forms.end() ? guessed : known->type,
                               known == forms.end() ? 8 : known->format, representation.payload});
        }
    }
    return content;
}

X11Pasteboard::X11Pasteboard(X11Connection& connection, Clock& clock, Logger logger)
    : m_state(std::make_unique<State>(*this, connection, clock, std::move(logger)))
{}

X11Pasteboard::~X11Pasteboard() = default;

std::int64_t X11Pasteboard::changeCount() const
{
    return m_state->changes;
}

Task<Result<PasteboardSnapshot, PasteboardError>> X11Pasteboard::snapshot()
{
    auto& state = *m_state;
    if (state.connection.isLost())
        co_return failure(state.error());
    const PasteboardError cancelled{PasteboardError::Kind::cancelled};
    state.primaryBefore.reset();
    X11SelectionReader::Content content;
    std::shared_ptr<X11SelectionReader::Conversation> clipboard;
    std::shared_ptr<X11SelectionReader::Conversation> primary;
    if (state.clipboard.isOwner())
        content.forms = state.clipboard.content();
    else
        clipboard = state.reader.ask(state.connection.atom("CLIPBOARD"));
    // While the owner makes up its answer the server tells who has the focus.
    if (pastesFromPrimary(state.windows.focusedClass()))
        primary = state.reader.ask(XA_PRIMARY);
    state.hasLooked = true;
    if (clipboard) {
        const auto read = co_await state.reader.read(clipboard);
        if (!read)
            co_return failure(cancelled);
        content = *read;
    }
    if (primary) {
        const bool isSaved = co_await state.savePrimary(primary);
        if (!isSaved)
            co_return failure(cancelled);
    }
    if (!content.isComplete)
        state.logger.warning("The owner of the clipboard has not handed over everything");
    co_return state.asSnapshot(content);
}

Task<Result<void, PasteboardError>> X11Pasteboard::writeText(std::string text, bool isTransient)
{
    auto& state = *m_state;
    // Without a snapshot just before, the window in focus may be another by now.
    const bool hasLooked = std::exchange(state.hasLooked, false) || state.primaryBefore;
    if (!hasLooked && pastesFromPrimary(state.windows.focusedClass())) {
        const auto asked = state.reader.ask(XA_PRIMARY);
        const bool isSaved = co_await state.savePrimary(asked);
        if (!isSaved)
            co_return failure(PasteboardError{PasteboardError::Kind::cancelled});
    }
    auto content = textContent(state.connection, text, isTransient);
    const auto tell = [&state](unsigned long requestor, unsigned long target) { state.served(requestor, target); };
    if (!state.clipboard.own(std::move(content), tell))
        co_return failure(state.error());
    state.writeToPrimary(text);
    state.count();
    co_return Result<void, PasteboardError>();
}

Task<Result<void, PasteboardError>> X11Pasteboard::restore(PasteboardSnapshot snapshot)
{
    auto& state = *m_state;
    state.releasePrimary();
    auto content = state.asContent(snapshot);
    if (content.empty())
        state.clipboard.disown();
    else if (!state.clipboard.own(std::move(content), {}))
        co_return failure(state.error());
    if (state.connection.isLost())
        co_return failure(state.error());
    state.count();
    co_return Result<void, PasteboardError>();
}

/// As the clipboard manager protocol of freedesktop.org has it: whoever owns CLIPBOARD_MANAGER takes all when it is
/// asked for SAVE_TARGETS.
Task<void> X11Pasteboard::handOver()
{
    auto& state = *m_state;
    const auto manager = state.connection.atom("CLIPBOARD_MANAGER");
    if (state.connection.isLost() || !state.clipboard.isOwner() ||
        XGetSelectionOwner(state.connection.display(), manager) == None)
        co_return;
    co_await state.reader.request(manager, state.connection.atom("SAVE_TARGETS"), kHandOverPatience);
}

} // namespace vocalith
