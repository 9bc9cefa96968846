#include "app/ui/UiResources.h"

#include "app/ui/overlay/LevelBars.h"

#include <QtQml/QQmlEngine>

#include <QDir>

/// The macro wants to stand outside any namespace.
static void initializeResources()
{
    Q_INIT_RESOURCE(ui);
}

namespace vocalith {

void loadUiResources()
{
    initializeResources();
    qmlRegisterType<LevelBars>("Vocalith.Ui", 1, 0, "LevelBars");
}

} // namespace vocalith
