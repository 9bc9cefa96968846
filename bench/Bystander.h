#pragma once

#include "core/output/TextOutput.h"
#include "core/session/OverlayDisplay.h"
#include "ports/Analytics.h"
#include "ports/Notices.h"
#include "ports/SoundPlayer.h"
#include "ports/SystemVolume.h"

namespace vocalith::bench {

/// Those who are told things that a benchmark does not look at, but for the end of a dictation.
struct Bystander final : Analytics, Notices, SoundPlayer, SystemVolume, OverlayDisplay, TextOutput {
    void event(std::string_view) override {}
    void show(std::string_view) override {}
    Result<void, std::string> play(Sound) override { return {}; }
    void stop() override {}
    void mute() override {}
    void restore() override {}
    void show(const OverlayVisibilityState&) override {}
    void showPrompt(const PromptChoice&) override {}
    void showIndicator(ProcessingIndicator::State) override {}
    void showProgress(double) override {}
    void dictationEnded(const DictationOutcome&) override { ended = true; }
    Task<Result<TextDestination, TextOutputError>> deliver(std::string, ActionMode) override
    {
        co_return TextDestination::application;
    }

    bool ended = false;
};

} // namespace vocalith::bench
