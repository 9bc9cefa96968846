#include "core/output/typing/USLayout.h"

#include "ports/InputSources.h"

#include <algorithm>
#include <array>

namespace vocalith {
namespace {

constexpr std::array kIdentifiers{"com.apple.keylayout.US", "com.apple.keylayout.ABC"};

} // namespace

bool USLayout::select()
{
    m_timer.reset();
    if (!m_remembered)
        m_remembered = m_inputSources.current();
    if (!m_remembered)
        return false;
    const auto installed = m_inputSources.installed();
    for (const auto* identifier : kIdentifiers) {
        if (std::ranges::find(installed, identifier) != installed.end() && m_inputSources.select(identifier))
            return true;
    }
    switchBack();
    return false;
}

void USLayout::switchBackLater()
{
    m_timer = m_clock.after(kSwitchBackDelay, [this] { switchBack(); });
}

void USLayout::switchBack()
{
    m_timer.reset();
    if (!m_remembered)
        return;
    const auto layout = std::move(*m_remembered);
    m_remembered.reset();
    m_inputSources.select(layout);
}

} // namespace vocalith
