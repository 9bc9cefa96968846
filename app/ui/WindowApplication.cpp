#include "app/ui/WindowApplication.h"

#include "app/ui/overlay/OverlayScene.h"
#include "ports/ApplicationID.h"

#include <QtWidgets/QApplication>

namespace vocalith {

std::unique_ptr<QCoreApplication> makeWindowApplication(const std::string& platform, int& argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", QByteArray::fromStdString(platform));
    useSoftwareRendering();
    auto application = std::make_unique<QApplication>(argc, argv);
    QGuiApplication::setDesktopFileName(QLatin1String(kApplicationID));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Vocalith"));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    return application;
}

} // namespace vocalith
