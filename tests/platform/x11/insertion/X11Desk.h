#pragma once

#include "base/Clock.h"
#include "platform/x11/X11Connection.h"
#include "platform/x11/clipboard/X11Pasteboard.h"
#include "platform/x11/keyboard/X11InputSources.h"
#include "platform/x11/keyboard/X11KeyEvents.h"
#include "platform/x11/windows/X11FocusedApp.h"
#include "tests/support/MainLoop.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/TextEditor.h"

#include <gtest/gtest.h>

#include <X11/Xlib.h>

#include <string>
#include <utility>
#include <vector>

namespace vocalith::test {

/// A display with everything that insertion needs on it.
struct X11Desk {
    explicit X11Desk(XDisplay::Options options = {}) : display(options) {}

    std::unique_ptr<X11Connection> connect()
    {
        auto opened = X11Connection::open(display.name(), log.logger());
        EXPECT_TRUE(opened);
        return std::move(opened).value();
    }

    /// What has been fetched so far, and by whom.
    bool wasFetchedByFocus() const
    {
        for (const auto& fetch : fetches) {
            if (fetch.reader == PasteboardFetch::Reader::focusedApplication)
                return true;
        }
        return false;
    }

    /// Presses the keys that paste, with the private source as a smart paste does.
    void postPaste(std::uint64_t flags);
    /// Snapshot, write, post, wait for the fetch, restore.
    void paste(const std::string& text, std::uint64_t flags);
    void write(const std::string& text, bool isTransient = false)
    {
        EXPECT_TRUE(await(clipboard.writeText(text, isTransient)));
    }
    /// What a third-party program reads from the clipboard.
    std::string read(const std::string& type) const
    {
        return display.run({"xclip", "-selection", "clipboard", "-o", "-t", type});
    }

    XDisplay display;
    RecordedLog log;
    SystemClock clock;
    std::unique_ptr<X11Connection> forClipboard = connect();
    std::unique_ptr<X11Connection> forKeys = connect();
    std::unique_ptr<X11Connection> forQuestions = connect();
    X11Pasteboard clipboard{*forClipboard, clock, log.logger()};
    X11KeyEvents keys{*forKeys, clock, log.logger()};
    X11InputSources layouts{*forQuestions};
    X11FocusedApp focus{*forQuestions};
    std::vector<PasteboardFetch> fetches;
    Subscription onFetch =
        clipboard.fetched.subscribe([this](const PasteboardFetch& fetch) { fetches.push_back(fetch); });
};

} // namespace vocalith::test
