#include "app/cli/replacements/ReplacementsCommandLine.h"

#include "base/CaseName.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <utility>

namespace vocalith {
namespace {

constexpr const char* kFooter = R"(
Examples:
  vocalith replacements add "colour, colur" color
  vocalith replacements add --regex '(\d+) euros?' '$1 €' --timing afterAI
  vocalith replacements edit 2 --replacement Elizabeth
  vocalith replacements test "Liz likes this colour"
  vocalith replacements import list.csv

A plain entry is found as a whole word, in any case; several spellings are separated by commas. In a replacement \n is a
line break, \t a tab, \\ a backslash, $0 what was found, $1 the first group of a regular expression, \$ a dollar sign.
Replacements apply from first to last, each to what those before it have made of the text.)";

constexpr const char* kWhich = "Its number in the list, its identity, or what it looks for";

void addTiming(CLI::App& command, std::string& timing, const char* help)
{
    std::vector<std::string> names;
    names.reserve(kAllCases<WordReplacementTiming>.size());
    for (const auto one : kAllCases<WordReplacementTiming>)
        names.emplace_back(caseName(one));
    command.add_option("--timing", timing, help)
        ->transform(CLI::IsMember(names, CLI::ignore_case).description(""))
        ->type_name("TIMING");
}

void addFormat(CLI::App& command, std::string& format)
{
    command.add_option("--format", format, "csv or json; else the name of the file decides, or what is in it")
        ->transform(CLI::IsMember(std::vector<std::string>{"csv", "json"}, CLI::ignore_case).description(""))
        ->type_name("FORMAT");
}

} // namespace

struct ReplacementsCommandLine::Parts {
    CLI::App* command = nullptr;
    std::vector<std::pair<CLI::App*, std::function<ReplacementsOptions()>>> actions;
    ReplacementsListOptions list;
    ReplacementsAddOptions added;
    ReplacementsEditOptions edited;
    ReplacementsRemoveOptions removed;
    ReplacementsImportOptions imported;
    ReplacementsExportOptions exported;
    ReplacementsTestOptions tested;
    bool toPlain = false;
    bool toRegex = false;
    std::string timing;
    std::string format;

    /// The options get the words that several actions share when the action is the one that was typed.
    template <class Options, class Complete>
    CLI::App* add(const char* name, const char* help, Options& options, Complete complete)
    {
        auto* action = command->add_subcommand(name, help);
        actions.emplace_back(action, [this, &options, complete] {
            complete(options);
            return ReplacementsOptions(options);
        });
        return action;
    }

    std::optional<ReplacementFormat> formatNamed() const { return caseNamed<ReplacementFormat>(format); }
    std::optional<WordReplacementTiming> timingNamed() const { return caseNamed<WordReplacementTiming>(timing); }

    void addChanges()
    {
        const char* const when = "When it applies: beforeAI, afterAI or both";
        auto* action = add("add", "Add an entry at the end of the list", added,
                           [this](auto& options) { options.timing = timingNamed().value_or(options.timing); });
        action->add_option("original", added.original, "The word, several spellings, or a regular expression")
            ->required()
            ->type_name("ORIGINAL");
        action->add_option("replacement", added.replacement, "What is written in its place; \"\" removes it")
            ->required()
            ->type_name("REPLACEMENT");
        action->add_flag("--regex", added.isRegex, "ORIGINAL is a regular expression, as ICU has them");
        addTiming(*action, timing, "When it applies: beforeAI (unless you say otherwise), afterAI or both");

        action = add("edit", "Change an entry", edited, [this](auto& options) {
            options.timing = timingNamed();
            if (toRegex || toPlain)
                options.isRegex = toRegex;
        });
        action->add_option("which", edited.which, kWhich)->required()->type_name("WHICH");
        action->add_option("--original", edited.original, "What it looks for")->type_name("ORIGINAL");
        action->add_option("--replacement", edited.replacement, "What it writes")->type_name("REPLACEMENT");
        auto* regex = action->add_flag("--regex", toRegex, "Make it a regular expression");
        action->add_flag("--plain", toPlain, "Make it a plain entry")->excludes(regex);
        addTiming(*action, timing, when);

        action = add("remove", "Remove entries", removed, [](auto&) {});
        action->add_option("which", removed.which, kWhich)->required()->type_name("WHICH");
    }

    void addExchange()
    {
        auto* action = add("import", "Take over a list; what is there already takes the new replacement", imported,
                           [this](auto& options) { options.format = formatNamed(); });
        action->add_option("file", imported.file, "A CSV or JSON file; - reads standard input")
            ->required()
            ->type_name("FILE");
        action->add_flag("--replace", imported.replace, "In place of the whole list");
        addFormat(*action, format);
        action->footer(
            "\nCSV: original,replacement,isRegex,timing. The last two may be absent; semicolons and tabs do too."
            "\nJSON: a list as \"export\" writes it, or a file with settings.");

        action = add("export", "Write the list as CSV or JSON", exported,
                     [this](auto& options) { options.format = formatNamed(); });
        action->add_option("file", exported.file, "Where to; standard output when absent")->type_name("FILE");
        action->add_flag("--force", exported.force, "Replace a file that exists");
        addFormat(*action, format);
    }

    void addTest()
    {
        auto* action = add("test", "Print what becomes of a text, and which entries matched", tested,
                           [this](auto& options) { options.timing = timingNamed(); });
        action->add_option("text", tested.text, "The text; standard input when absent")->type_name("TEXT");
        addTiming(*action, timing, "Only the entries that apply then: beforeAI or afterAI; else as in a dictation");
    }
};

ReplacementsCommandLine::ReplacementsCommandLine(CLI::App& app) : m_parts(std::make_unique<Parts>())
{
    m_parts->command = app.add_subcommand("replacements", "Words that are written in place of others");
    m_parts->command->require_subcommand(0, 1);
    m_parts->command->footer(kFooter);
    auto* list = m_parts->add("list", "List the entries in the order in which they apply", m_parts->list, [](auto&) {});
    list->add_flag("--json", m_parts->list.json, "Print the list as JSON");
    m_parts->addChanges();
    m_parts->addExchange();
    m_parts->addTest();
}

ReplacementsCommandLine::~ReplacementsCommandLine() = default;

std::optional<ReplacementsOptions> ReplacementsCommandLine::options() const
{
    if (!m_parts->command->parsed())
        return std::nullopt;
    for (const auto& [action, options] : m_parts->actions) {
        if (action->parsed())
            return options();
    }
    return ReplacementsListOptions{};
}

} // namespace vocalith
