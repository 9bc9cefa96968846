#pragma once

#include "base/JsonFields.h"
#include "base/Result.h"

#include <string>
#include <vector>

namespace vocalith {

/// A setting whatever its type: what reloads it, and what the command line lists, reads and changes. Main thread.
class AnySetting {
public:
    AnySetting() = default;
    AnySetting(const AnySetting&) = delete;
    AnySetting& operator=(const AnySetting&) = delete;
    virtual ~AnySetting() = default;

    virtual const std::string& key() const = 0;
    /// Whether the user chooses it; the others are what the program notes for itself.
    virtual bool isChoice() const = 0;
    /// Whether its JSON holds API keys, as `provider.key` of its elements.
    virtual bool holdsSecrets() const = 0;
    /// Which values there are, for people: "true or false", "a number from 1 to 256", "one of: panel, notch".
    virtual std::string description() const = 0;
    /// What can be typed for it, when that can be listed.
    virtual std::vector<std::string> words() const = 0;

    /// The value now; null for nothing.
    virtual Json json() const = 0;
    virtual Json defaultJson() const = 0;
    /// As people type it: a word, a number, "none" for nothing, JSON where there is no simpler form.
    virtual std::string text() const = 0;

    /// The value that the text stands for, not yet checked against `check`; the error is a sentence.
    virtual Result<Json, std::string> parse(const std::string& text) const = 0;
    /// Whether the setting can have that value; the error is a sentence.
    virtual Result<void, std::string> check(const Json& value) const = 0;
    /// Sets it to a value that was checked; any other changes nothing.
    virtual void assign(const Json& value) = 0;
    /// Removes the entry, so that the default holds, also one that changes with the machine or a later version.
    virtual void reset() = 0;
    /// Takes the value of the file as it was last read.
    virtual void reload() = 0;
};

} // namespace vocalith
