#include "tests/support/FakeAccessibility.h"

namespace vocalith::test {

class FakeAccessibility::Element final : public FocusedElement {
public:
    explicit Element(FakeAccessibility& owner) : m_owner(owner) {}

    bool isSecure() const override { return m_owner.isSecure; }
    bool isEditable() const override { return true; }
    int processId() const override { return 0; }

    Task<int> setSelectedText(std::string text) override
    {
        if (m_owner.hangsAtText) {
            OneShot<bool> never;
            co_await never;
            co_return 2;
        }
        if (m_owner.error == 0)
            m_owner.inserted.push_back(std::move(text));
        co_return m_owner.error;
    }
    Task<std::optional<FocusedText>> text(int limit) override
    {
        ++m_owner.textReads;
        m_owner.limit = limit;
        co_return m_owner.text;
    }
    Task<std::string> visibleText(int) override { co_return m_owner.visibleText; }

private:
    FakeAccessibility& m_owner;
};

Task<std::unique_ptr<FocusedElement>> FakeAccessibility::focusedElement()
{
    if (hangs) {
        OneShot<bool> never;
        co_await never;
        co_return nullptr;
    }
    if (!hasElement)
        co_return nullptr;
    co_return std::make_unique<Element>(*this);
}

} // namespace vocalith::test
