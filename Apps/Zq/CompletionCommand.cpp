#include <string>

#include "Apps/Zq/Arguments.h"
#include "Apps/Zq/Command.h"
#include "Apps/Zq/Output.h"

namespace zq {

namespace {

int run(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {}, 1, 1);
    if (!parsed) return kUsage;
    if (parsed->words()[0] != "bash" && parsed->words()[0] != "zsh") {
        return complain("completion is written for bash and zsh");
    }
    // zsh reads the same function through its bash emulation.
    std::string script;
    if (parsed->words()[0] == "zsh") script += "autoload -U +X bashcompinit && bashcompinit\n";
    script +=
        "_zq() {\n    local word=${COMP_WORDS[COMP_CWORD]} words\n"
        "    case ${COMP_WORDS[COMP_CWORD-1]} in --body-file|--key-file) COMPREPLY=($(compgen -f -- "
        "\"$word\")); return;; esac\n"
        "    if [ $COMP_CWORD -eq 1 ]; then\n        words='--help'\n";
    for (const Command* command : allCommands()) {
        if (!command->hidden) script.append("        words+=' ").append(command->name).append("'\n");
    }
    script += "    else\n        case ${COMP_WORDS[1]} in\n";
    for (const Command* command : allCommands()) {
        if (command->hidden) continue;
        script.append("            ").append(command->name).append(") words='--help ");
        script.append(command->completions).append("' ;;\n");
    }
    script +=
        "        esac\n    fi\n    COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n}\ncomplete -F _zq zq";
    return finishWithBytes(script, /*line=*/true);
}

}  // namespace

const Command kCompletionCommand = {
    .name = "completion",
    .summary = "print the completion for a shell",
    .help =
        "usage: zq completion bash|zsh\n\n"
        "Prints what the shell needs to complete commands and options. For bash, in ~/.bashrc:\n"
        "  eval \"$(zq completion bash)\"\n",
    .codes = exitCodes(),
    .completions = "bash zsh",
    .hidden = false,
    .run = run,
};

}  // namespace zq
