#include "tests/support/XDisplay.h"

#include "tests/support/MainLoop.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <algorithm>
#include <csignal>
#include <utility>

namespace vocalith::test {

namespace fs = std::filesystem;

namespace {

std::string firstLine(const fs::path& file)
{
    if (!fs::exists(file))
        return {};
    const auto text = readFile(file);
    const auto end = text.find('\n');
    return end == std::string::npos ? std::string() : text.substr(0, end); // it may be half written
}

} // namespace

/// The test's own eyes on the display.
struct XDisplay::Client {
    explicit Client(const std::string& name) : display(XOpenDisplay(name.c_str()))
    {
        // A window may vanish while it is looked at.
        XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
        if (display != nullptr) // the server may be ended by the test
            XSetIOErrorExitHandler(
                display, [](Display*, void*) {}, nullptr);
    }
    ~Client()
    {
        if (display != nullptr)
            XCloseDisplay(display);
    }

    std::string classOf(Window window) const
    {
        XClassHint hint{};
        if (XGetClassHint(display, window, &hint) == 0)
            return {};
        std::string name = hint.res_class;
        XFree(hint.res_class);
        XFree(hint.res_name);
        return name;
    }

    Window parentOf(Window window) const
    {
        Window root = None;
        Window parent = None;
        Window* children = nullptr;
        unsigned int count = 0;
        if (XQueryTree(display, window, &root, &parent, &children, &count) == 0)
            return None;
        XFree(children);
        return parent == root ? None : parent;
    }

    bool hasProperty(Window window, const char* name) const
    {
        const Atom property = XInternAtom(display, name, False);
        int count = 0;
        Atom* const properties = XListProperties(display, window, &count);
        const bool isThere = std::find(properties, properties + count, property) != properties + count;
        XFree(properties);
        return isThere;
    }

    /// Asks the window manager, which answers with a property of the window.
    void requestFrameExtents(Window window) const
    {
        XEvent request{};
        request.xclient.type = ClientMessage;
        request.xclient.window = window;
        request.xclient.message_type = XInternAtom(display, "_NET_REQUEST_FRAME_EXTENTS", False);
        request.xclient.format = 32;
        XSendEvent(display, DefaultRootWindow(display), False, SubstructureRedirectMask | SubstructureNotifyMask,
                   &request);
        XFlush(display);
    }

    Display* display;
};

XDisplay::XDisplay() : XDisplay(Options())
{}

XDisplay::XDisplay(Options options)
{
    for (const auto* folder : {"home", "run"}) {
        fs::create_directory(m_folder / folder);
        fs::permissions(m_folder / folder, fs::perms::owner_all);
    }
    m_environment = {"HOME=" + home().string(),
                     "XDG_RUNTIME_DIR=" + (m_folder / "run").string(),
                     "DBUS_SESSION_BUS_ADDRESS=" + m_bus.address(),
                     "DBUS_SYSTEM_BUS_ADDRESS=" + m_bus.address(),
                     "PATH=/usr/bin:/bin",
                     "LC_ALL=C.UTF-8",
                     "GSETTINGS_BACKEND=memory",
                     "GDK_BACKEND=x11",
                     "QT_QPA_PLATFORM=xcb"};
    if (options.hasAccessibility)
        m_environment.emplace_back("QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1");
    else
        m_environment.emplace_back("NO_AT_BRIDGE=1");
    startServer();
    if (options.hasAccessibility)
        startAccessibility();
    if (options.hasWindowManager)
        startWindowManager();
}

XDisplay::~XDisplay()
{
    // Asked to end, the launcher ends its own bus; killed, it would leave that behind.
    m_accessibility.signal(SIGTERM);
    m_accessibility.wait();
}

void XDisplay::startServer()
{
    const auto number = m_folder / "display";
    m_server = ChildProcess({"Xvfb", "-displayfd", "1", "-screen", "0", "1280x800x24", "-nolisten", "tcp", "-noreset"},
                            m_environment, number);
    runUntil([&] { return !firstLine(number).empty(); });
    m_name = ":" + firstLine(number);
    m_environment.push_back("DISPLAY=" + m_name);
    m_client = std::make_unique<Client>(m_name);
    EXPECT_NE(m_client->display, nullptr);
}

/// Returns when it answers: it calls itself the window manager long before it looks after any window.
void XDisplay::startWindowManager()
{
    m_background.push_back(start({"openbox", "--sm-disable"}));
    const Window root = DefaultRootWindow(m_client->display);
    runUntil([&] { return m_client->hasProperty(root, "_NET_SUPPORTING_WM_CHECK"); });
    const Window window = XCreateSimpleWindow(m_client->display, root, 0, 0, 1, 1, 0, 0, 0);
    runUntil([&] {
        m_client->requestFrameExtents(window); // what comes before it listens is lost
        return m_client->hasProperty(window, "_NET_FRAME_EXTENTS");
    });
    XDestroyWindow(m_client->display, window);
    XFlush(m_client->display);
}

void XDisplay::startAccessibility()
{
    m_accessibility = start({"/usr/libexec/at-spi-bus-launcher", "--launch-immediately", "--a11y=1"});
    run({"gdbus", "wait", "--session", "--timeout", "50", "org.a11y.Bus"});
}

std::string XDisplay::run(std::vector<std::string> command) const
{
    const auto output = m_folder / fmt::format("run-{}", m_started++);
    const auto name = command[0];
    ChildProcess process(std::move(command), m_environment, output);
    // The event loop runs meanwhile: the command may want something from this very program.
    std::optional<int> status;
    runUntil([&] {
        status = process.ended();
        return status.has_value();
    });
    EXPECT_EQ(status, 0) << name << ": " << readFile(output.string() + ".err");
    return readFile(output);
}

ChildProcess XDisplay::start(std::vector<std::string> command) const
{
    return {std::move(command), m_environment, m_folder / fmt::format("run-{}", m_started++)};
}

void XDisplay::setLayout(const std::string& layouts, const std::string& variants) const
{
    run({"setxkbmap", "-rules", "evdev", "-model", "pc105", "-layout", layouts, "-variant", variants});
}

std::string XDisplay::focusedClass() const
{
    Window window = None;
    int revert = 0;
    XGetInputFocus(m_client->display, &window, &revert);
    // Toolkits give the focus to a window inside the one that says its class.
    for (; window > PointerRoot; window = m_client->parentOf(window)) {
        if (auto name = m_client->classOf(window); !name.empty())
            return name;
    }
    return {};
}

void XDisplay::waitForFocus(const std::string& windowClass) const
{
    runUntil([&] { return focusedClass() == windowClass; });
}

} // namespace vocalith::test
