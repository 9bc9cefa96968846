#include "core/output/typing/TextTypingService.h"

#include <QString>

namespace vocalith {

std::string insertableText(const std::string& text)
{
    QString units = QString::fromStdString(text);
    units.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    units.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    units.removeIf([](QChar unit) {
        return unit.category() == QChar::Other_Control && unit != QLatin1Char('\n') && unit != QLatin1Char('\t');
    });
    return units.toStdString();
}

} // namespace vocalith
