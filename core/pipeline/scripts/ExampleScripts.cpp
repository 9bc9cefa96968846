#include "core/pipeline/scripts/ExampleScripts.h"

#include <QFile>

/// The macro wants to stand outside any namespace.
static void initializeExamples()
{
    Q_INIT_RESOURCE(examples);
}

namespace vocalith {

std::vector<ExampleScript> exampleScripts()
{
    initializeExamples();
    std::vector<ExampleScript> examples = {
        {"replace-words", "Replaces words and keeps their case: \"Colour\" becomes \"Color\"", {}},
        {"search-the-web", "Opens a web search with the text and ends there", {}},
        {"speak", "Reads the text aloud and passes it on", {}},
    };
    for (auto& example : examples) {
        QFile file(QString::fromStdString(":/vocalith/scripts/" + example.name + ".zsh"));
        if (file.open(QIODevice::ReadOnly))
            example.script = file.readAll().toStdString();
    }
    return examples;
}

} // namespace vocalith
