#include <string>

#include "Apps/Zq/Arguments.h"
#include "Apps/Zq/Command.h"
#include "Apps/Zq/Output.h"

namespace zq {

namespace {

/// What the value of an option may be. A pattern of the shell: command and option.
struct Values {
    std::string_view pattern;
    std::string_view words;
};
constexpr std::string_view kFiles = "files";
constexpr Values kValues[] = {
    {"*' '--body-file|*' '--key-file", kFiles},
    {"*' '--via", "bridge script distributed"},
    {"case' '--to", "camel upperCamel snake kebab constant"},
    {"*' '--to", "com.tessaradev.Orbel com.tessaradev.OrbelHelper"},
    {"*' '--on", "main queue"},
    {"*' '--type", "string integer real boolean date data json"},
    {"*' '--algorithm", "md5 sha1 sha256 sha384 sha512"},
    {"*' '--body|*' '--timeout|*' '--count|*' '--with|*' '--key-env", ""},
};

// The word in hand, the one before it, and the first behind the command that is neither option nor value. The
// shell takes --to=x for three words. Arrays are filled line by line, for names with blanks in them.
constexpr std::string_view kBegin = R"(_zq() {
    local word=${COMP_WORDS[COMP_CWORD]} last=${COMP_WORDS[COMP_CWORD-1]} command=${COMP_WORDS[1]}
    local first= words= line= i
    case $last in =) last=${COMP_WORDS[COMP_CWORD-2]} ;; esac
    case $word in =) word= ;; esac
    COMPREPLY=()
    for ((i = 2; i < COMP_CWORD; i++)); do
        case ${COMP_WORDS[i]} in
            --yes|--raw|--brief|--help) ;;
            --*) if [ "${COMP_WORDS[i+1]}" = = ]; then i=$((i + 2)); else i=$((i + 1)); fi ;;
            *) first=${COMP_WORDS[i]}; break ;;
        esac
    done
)";
constexpr std::string_view kEnd =
    R"(    while IFS= read -r line; do COMPREPLY+=("$line"); done < <(compgen -W "$words" -- "$word")
}
complete -F _zq zq)";

std::string scriptText() {
    std::string script(kBegin);
    script += "    if [ $COMP_CWORD -eq 1 ]; then\n        words='--help --version help";
    for (const Command* command : allCommands()) {
        if (!command->hidden) script.append(" ").append(command->name);
    }
    script += "'\n    else case $command' '$last in\n";
    for (const auto& [pattern, words] : kValues) {
        script.append("        ").append(pattern).append(") ");
        if (words == kFiles) {
            script +=
                "compopt -o filenames 2>/dev/null\n            while IFS= read -r line; do "
                "COMPREPLY+=(\"$line\"); done < <(compgen -f -- \"$word\")\n            return ;;\n";
        } else {
            script.append("words='").append(words).append("' ;;\n");
        }
    }
    script += "        *) words=--help; case $command' '$first in\n";
    for (const Command* command : allCommands()) {
        for (const auto& [after, words] : command->offers) {
            script.append("            ").append(command->name).append("' '").append(after);
            script.append(") words+=' ").append(words).append("' ;;\n");
        }
    }
    return script.append("        esac ;;\n    esac; fi\n").append(kEnd);
}

int run(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {}, {"SHELL"});
    if (!parsed) return kUsage;
    const std::string& shell = parsed->words()[0];
    if (shell != "bash" && shell != "zsh") return complain("completion is written for bash and zsh");
    // zsh reads the same function through its bash emulation.
    const std::string prelude = shell == "zsh" ? "autoload -U +X bashcompinit && bashcompinit\n" : "";
    return finishWithBytes(prelude + scriptText(), /*line=*/true);
}

constexpr Offer kOffers[] = {{"", "bash zsh"}};

}  // namespace

const Command kCompletionCommand = {
    .name = "completion",
    .summary = "print the completion for a shell",
    .help =
        "usage: zq completion bash|zsh\n\n"
        "Prints what the shell needs to complete commands and options. For bash, in ~/.bashrc:\n"
        "  eval \"$(zq completion bash)\"\n",
    .codes = exitCodes(),
    .offers = kOffers,
    .hidden = false,
    .run = run,
};

}  // namespace zq
