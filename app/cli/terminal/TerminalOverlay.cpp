#include "app/cli/terminal/TerminalOverlay.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace vocalith {
namespace {

constexpr std::array<std::string_view, 8> kBlocks = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
constexpr std::size_t kShownBars = 24;

std::string clockText(double seconds)
{
    const auto whole = static_cast<int>(seconds);
    return fmt::format("{}:{:02}", whole / 60, whole % 60);
}

} // namespace

void TerminalOverlay::showLevel(const std::vector<float>& bars)
{
    m_bars.clear();
    for (auto bar = bars.end() - static_cast<std::ptrdiff_t>(std::min(bars.size(), kShownBars)); bar != bars.end();
         ++bar) {
        const auto height = std::lround(std::clamp(*bar, 0.0F, 1.0F) * static_cast<float>(kBlocks.size() - 1));
        m_bars += kBlocks[static_cast<std::size_t>(height)];
    }
    draw();
}

void TerminalOverlay::showElapsedTime(double seconds)
{
    m_elapsedTime = seconds;
    draw();
}

void TerminalOverlay::show(const OverlayVisibilityState& state)
{
    const auto* visible = std::get_if<OverlayState>(&state);
    if (visible && !m_isVisible) {
        m_elapsedTime = 0;
        m_progress = 0;
        m_bars.clear();
    }
    m_isVisible = visible != nullptr;
    if (!visible) {
        m_terminal.clearStatus();
        return;
    }
    draw();
}

void TerminalOverlay::showIndicator(ProcessingIndicator::State indicator)
{
    m_indicator = indicator;
    draw();
}

void TerminalOverlay::showProgress(double progress)
{
    m_progress = progress;
    draw();
}

void TerminalOverlay::dictationEnded(const DictationOutcome& outcome)
{
    m_onEnded(outcome);
}

void TerminalOverlay::draw()
{
    if (m_isVisible)
        m_terminal.status(m_indicator == ProcessingIndicator::State::starting ? recordingLine() : workingLine());
}

std::string TerminalOverlay::recordingLine() const
{
    return m_terminal.coloured(Terminal::Colour::red, "●") + " " + clockText(m_elapsedTime) + "  " + m_bars + "  " +
           m_terminal.coloured(Terminal::Colour::dim, m_keyHint);
}

std::string TerminalOverlay::workingLine() const
{
    using State = ProcessingIndicator::State;
    switch (m_indicator) {
    case State::starting: break;
    case State::transcribing:
        return m_progress > 0 ? fmt::format("Transcribing … {:.0f} %", m_progress * 100) : "Transcribing …";
    case State::processing: return "Processing …";
    case State::speaking: return "Speaking …";
    }
    return {};
}

void TerminalNotices::show(std::string_view text)
{
    m_terminal.line(m_terminal.coloured(Terminal::Colour::yellow, "Notice: ") + std::string(text));
}

} // namespace vocalith
