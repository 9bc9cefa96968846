#pragma once

#include "base/OneShot.h"
#include "ports/Accessibility.h"

#include <string>
#include <vector>

namespace vocalith::test {

/// One focused element that the test describes.
class FakeAccessibility final : public Accessibility {
public:
    bool isProcessTrusted() const override { return isTrusted; }
    Task<std::unique_ptr<FocusedElement>> focusedElement() override;

    bool isTrusted = true;
    bool hasElement = true;
    bool isSecure = false;
    bool hangs = false;       ///< no answer until the wait is stopped
    bool hangsAtText = false; ///< the same once the text is to be set
    int error = 0;            ///< of setting the text
    FocusedText text;
    std::string visibleText;

    std::vector<std::string> inserted;
    int textReads = 0;
    int limit = 0; ///< of the last reading

private:
    class Element;
};

} // namespace vocalith::test
