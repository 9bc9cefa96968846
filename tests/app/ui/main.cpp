#include "app/ui/overlay/OverlayScene.h"
#include "tests/app/ui/Display.h"

#include <gtest/gtest.h>

#include <QtWidgets/QApplication>

#include <memory>

namespace vocalith::test {

namespace {

std::unique_ptr<XDisplay> theDisplay;

/// The display is there before the application that windows need, and waits for its parts with the event loop of a
/// simpler one.
void makeDisplay(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    theDisplay = std::make_unique<XDisplay>();
    for (const auto& entry : theDisplay->environment()) {
        const auto equals = entry.find('=');
        qputenv(entry.substr(0, equals).c_str(), QByteArray::fromStdString(entry.substr(equals + 1)));
    }
}

} // namespace

XDisplay& display()
{
    return *theDisplay;
}

} // namespace vocalith::test

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    vocalith::test::makeDisplay(argc, argv);
    vocalith::useSoftwareRendering();
    int result = 1;
    {
        const QApplication application(argc, argv);
        QApplication::setQuitOnLastWindowClosed(false);
        result = RUN_ALL_TESTS();
    }
    vocalith::test::theDisplay.reset();
    return result;
}
