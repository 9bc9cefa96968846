#pragma once

#include "tests/support/XDisplay.h"

#include <string>

namespace vocalith::test {

/// A third-party application with one document, started on a display and focused. It ends with this.
class TextEditor {
public:
    enum class Kind {
        mousepad,   ///< GTK
        featherpad, ///< Qt
        xterm       ///< a terminal, in which `cat` writes each finished line into the document
    };

    TextEditor(const XDisplay& display, Kind kind, const std::string& text = {});

    pid_t processId() const { return m_process.id(); }
    /// Has the document saved until it holds that text; else the test fails with the difference.
    void expectText(const std::string& text) const;
    /// The document as it was saved last.
    std::string saved() const;
    void save() const;
    void signal(int number) const { m_process.signal(number); }

private:
    const XDisplay& m_display;
    Kind m_kind;
    std::filesystem::path m_file;
    ChildProcess m_process;
};

std::string nameOf(TextEditor::Kind kind);

} // namespace vocalith::test
