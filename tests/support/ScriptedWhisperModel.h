#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace vocalith::test {

/// A small whisper model file whose greedy decode says what the test wrote down, with the times that it wrote down. All
/// attention is switched off, so the audio does not matter: every 30 s window says the whole script.
struct ScriptedWhisperModel {
    struct Segment {
        double start = 0; ///< seconds in steps of 0.02
        double end = 0;
        std::string
            text; ///< words joined by single spaces; each is one token. A word "♪" can be left out by the library
    };
    enum class Driver {
        lastToken, ///< the next word follows from the last token: prompts change nothing, each task has its own script
        position   ///< the next word follows from the position: every token of a prompt skips one of the script
    };
    enum class Size {
        small,      ///< about 7 MB, decodes a window in some 60 ms
        whisperTiny ///< the dimensions and the cost of whisper's tiny model, 75 MB
    };

    std::vector<Segment> segments = {{0.0, 2.4, "The quick brown fox jumps."}, {2.6, 5.0, "Over the lazy dog, twice."}};
    /// What a multilingual model says when it translates.
    std::vector<Segment> translated = {{0.02, 3.0, "Translated text instead."}};
    bool multilingual = false;
    int detectedLanguage = 0; ///< the library's number of the language that a multilingual model detects
    Driver driver = Driver::lastToken;
    Size size = Size::small;

    void write(const std::filesystem::path& file) const;
};

} // namespace vocalith::test
