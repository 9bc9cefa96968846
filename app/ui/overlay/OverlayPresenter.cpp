#include "app/ui/overlay/OverlayPresenter.h"

#include "app/ui/overlay/OverlayModel.h"
#include "app/ui/overlay/OverlayWindow.h"
#include "ports/FocusedApp.h"

namespace vocalith {

OverlayPresenter::OverlayPresenter(OverlayModel& model, OverlayWindow& window, FocusedApp& focusedApp)
    : m_model(model), m_window(window), m_focusedApp(focusedApp)
{
    connect(&m_model, &OverlayModel::visibleChanged, this, &OverlayPresenter::visibleChanged);
}

Task<void> OverlayPresenter::shutDown()
{
    m_search.requestStop();
    co_await m_search.untilEmpty();
}

void OverlayPresenter::visibleChanged()
{
    m_search.requestStop();
    if (!m_model.isVisible())
        return m_window.hide();
    m_window.show();
    m_search.start(findScreen());
}

Task<void> OverlayPresenter::findScreen()
{
    const auto focused = co_await m_focusedApp.focused();
    const bool isWanted = focused && focused->window && m_model.isVisible();
    if (isWanted)
        m_window.moveTo(*focused->window);
}

} // namespace vocalith
