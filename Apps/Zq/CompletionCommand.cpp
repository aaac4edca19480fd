#include <cstdio>

#include "Apps/Zq/Arguments.h"
#include "Apps/Zq/Command.h"

namespace zq {

namespace {

int run(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {}, 1, 1);
    if (!parsed) return kUsage;
    if (parsed->words()[0] != "bash" && parsed->words()[0] != "zsh") {
        return complain("completion is written for bash and zsh");
    }
    // zsh reads the same function through its bash emulation.
    if (parsed->words()[0] == "zsh") std::puts("autoload -U +X bashcompinit && bashcompinit");
    std::puts("_zq() {\n    local word=${COMP_WORDS[COMP_CWORD]} words");
    std::puts(
        "    case ${COMP_WORDS[COMP_CWORD-1]} in --body-file|--key-file) COMPREPLY=($(compgen -f -- "
        "\"$word\")); "
        "return;; esac");
    std::puts("    if [ $COMP_CWORD -eq 1 ]; then\n        words='--help'");
    for (const Command* command : allCommands()) {
        if (!command->hidden) std::printf("        words+=' %s'\n", std::string(command->name).c_str());
    }
    std::puts("    else\n        case ${COMP_WORDS[1]} in");
    for (const Command* command : allCommands()) {
        if (command->hidden) continue;
        std::printf("            %s) words='--help %s' ;;\n", std::string(command->name).c_str(),
                    std::string(command->completions).c_str());
    }
    std::puts(
        "        esac\n    fi\n    COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n}\ncomplete -F _zq zq");
    return kDone;
}

}  // namespace

const Command kCompletionCommand = {
    .name = "completion",
    .summary = "print the completion for a shell",
    .help =
        "usage: zq completion bash|zsh\n\n"
        "Prints what the shell needs to complete commands and options. For bash, in ~/.bashrc:\n"
        "  eval \"$(zq completion bash)\"\n",
    .completions = "bash zsh",
    .hidden = false,
    .run = run,
};

}  // namespace zq
