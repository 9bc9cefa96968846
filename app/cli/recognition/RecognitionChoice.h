#pragma once

#include "app/cli/Options.h"
#include "core/session/DictationConfiguration.h"
#include "core/speech/TranscriptionService.h"
#include "models/TranscriptionSource.h"

namespace vocalith {

class ModelFileManager;
class ModelReport;

/// The model that the command line asks for, or the one that serves without a wish. A path to a model file makes its
/// folder the models folder of this run.
TranscriptionModelID chooseModel(const RecognitionOptions& options, TranscriptionSource source,
                                 const ModelReport& models, ModelFileManager& modelFiles);

/// The one shortcut of the command line, and what it dictates with.
DictationConfiguration dictationConfiguration(const DictateOptions& options, TranscriptionModelID model);

/// What of the command concerns recognition; empty for a command without any.
RecognitionOptions recognitionOptions(const Command& command);

/// How a dictated text is printed: as it is, or as a JSON object.
std::string printedDictation(const DictateOptions& options, const std::string& text, const TranscriptionModelID& model);

/// Why a recognition failed, for the terminal: with the command that shows the models when it was for want of one.
std::string explained(const TranscriptionError& error);

} // namespace vocalith
