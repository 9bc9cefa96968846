#include "app/cli/completion/CompletionScript.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace vocalith {
namespace {

/// For bash and zsh: `_vocalith_after WORD...` prints what can follow the words, one a line, or nothing where files are
/// expected.
constexpr const char* kAfter = R"script(
_vocalith_after() {
    local sequence="" word key="" count=0
    for word in "$@"; do
        case "$word" in
        "" | -*) ;;
        *)
            if _vocalith_words "$sequence" | grep -qxF -e "$word"; then
                sequence="${sequence:+$sequence }$word"
            else
                count=$((count + 1))
                key="$word"
            fi
            ;;
        esac
    done
    case "$sequence/$count" in
    "settings get/0" | "settings set/0" | "settings reset/"*) vocalith settings list --keys 2>/dev/null ;;
    "settings set/1") vocalith settings list --words "$key" 2>/dev/null ;;
    esac
    case "$sequence/$count" in
    "settings set/"[1-9]*) ;;
    *) _vocalith_words "$sequence" ;;
    esac
}
)script";

constexpr const char* kBash = R"script(
_vocalith() {
    local current="${COMP_WORDS[COMP_CWORD]}" words
    words="$(_vocalith_after "${COMP_WORDS[@]:1:COMP_CWORD-1}")"
    case "$current" in
    -*) ;;
    *) words="$(printf '%s\n' "$words" | grep -v '^-')" ;;
    esac
    COMPREPLY=($(compgen -W "$words" -- "$current"))
}
complete -o default -F _vocalith vocalith
)script";

constexpr const char* kZsh = R"script(
_vocalith() {
    local -a candidates
    candidates=(${(f)"$(_vocalith_after "${(@)words[2,CURRENT-1]}")"})
    [[ $PREFIX == -* ]] || candidates=(${candidates:#-*})
    (( $#candidates )) && compadd -- $candidates || _files
}
if [[ $funcstack[1] == _vocalith ]]; then
    _vocalith "$@"
else
    compdef _vocalith vocalith
fi
)script";

constexpr const char* kFish = R"script(
function __vocalith_after
    set -l sequence ""
    set -l key ""
    set -l count 0
    set -l tokens (commandline -opc)
    set -e tokens[1]
    for word in $tokens
        if string match -q -- '-*' $word
            continue
        else if contains -- $word (__vocalith_words "$sequence")
            set sequence (string trim -- "$sequence $word")
        else
            set count (math $count + 1)
            set key $word
        end
    end
    switch "$sequence/$count"
        case "settings get/0" "settings set/0" "settings reset/*"
            vocalith settings list --keys 2>/dev/null
            __vocalith_words "$sequence"
        case "settings set/1"
            vocalith settings list --words $key 2>/dev/null
        case "settings set/*"
        case "*"
            __vocalith_words "$sequence"
    end
end
complete -c vocalith -a "(__vocalith_after)"
complete -c vocalith -n 'test (count (__vocalith_after | string match -v -- "-*")) -gt 0' -f
)script";

std::string wordsFunction(const std::vector<CommandWords>& commands)
{
    std::string text = "_vocalith_words() {\n    case \"$1\" in\n";
    for (const auto& command : commands)
        text += fmt::format("    \"{}\") printf '%s\\n' {} ;;\n", command.path, fmt::join(command.words, " "));
    return text + "    esac\n}\n";
}

std::string fishWordsFunction(const std::vector<CommandWords>& commands)
{
    std::string text = "function __vocalith_words\n    switch \"$argv[1]\"\n";
    for (const auto& command : commands)
        text += fmt::format("        case \"{}\"\n            printf '%s\\n' {}\n", command.path,
                            fmt::join(command.words, " "));
    return text + "    end\nend\n";
}

} // namespace

std::string completionScript(const CompletionOptions& options)
{
    switch (options.shell) {
    case Shell::bash:
        return "# In ~/.bashrc: source <(vocalith completion bash)\n" + wordsFunction(options.commands) + kAfter +
               kBash;
    case Shell::zsh:
        return "#compdef vocalith\n# vocalith completion zsh > _vocalith, in a folder of $fpath\n" +
               wordsFunction(options.commands) + kAfter + kZsh;
    case Shell::fish:
        return "# vocalith completion fish > ~/.config/fish/completions/vocalith.fish\n" +
               fishWordsFunction(options.commands) + kFish;
    }
    return "";
}

} // namespace vocalith
