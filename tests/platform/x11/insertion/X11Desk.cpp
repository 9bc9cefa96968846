#include "tests/platform/x11/insertion/X11Desk.h"

#include "models/VirtualKeyCode.h"

namespace vocalith::test {

void X11Desk::postPaste(std::uint64_t flags)
{
    namespace code = virtual_key_code;
    const auto source = keys.createSource(KeyEvents::SourceState::privateState);
    ASSERT_NE(source, nullptr);
    const std::vector<KeyEvent> events{
        {code::command, true, flags}, {code::ansiV, true, flags}, {code::ansiV, false, flags}, {code::command, false}};
    EXPECT_TRUE(source->post(events));
}

void X11Desk::paste(const std::string& text, std::uint64_t flags)
{
    const auto before = await(clipboard.snapshot());
    ASSERT_TRUE(before);
    write(text);
    fetches.clear();
    postPaste(flags);
    EXPECT_TRUE(runUntil([&] { return wasFetchedByFocus(); }));
    EXPECT_TRUE(await(clipboard.restore(*before)));
}

} // namespace vocalith::test
