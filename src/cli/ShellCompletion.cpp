#include "cli/ShellCompletion.h"

#include "cli/CliCommand.h"
#include "cli/CommandSyntax.h"

namespace bv::cli {
namespace {

const char* kGlobalOptions = "--version --help";

std::string joined(const std::vector<std::string>& words) {
    std::string out;
    for (const auto& w : words) out += (out.empty() ? "" : " ") + w;
    return out;
}

std::string commandNames() {
    std::string out;
    for (const auto& c : commands()) out += std::string(c.name) + " ";
    return out + "help";
}

// Inside single quotes, for all three shells.
std::string quoted(const std::string& text) {
    std::string out = "'";
    for (const char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

std::string bashScript() {
    std::string s = "# bash completion for brimvale, generated from its command table\n"
                    "_brimvale() {\n"
                    "    local cur=\"${COMP_WORDS[COMP_CWORD]}\" prev=\"${COMP_WORDS[COMP_CWORD-1]}\"\n"
                    "    if (( COMP_CWORD == 1 )); then\n"
                    "        if [[ $cur == -* ]]; then mapfile -t COMPREPLY < <(compgen -W \"" +
                    std::string(kGlobalOptions) +
                    "\" -- \"$cur\")\n"
                    "        else mapfile -t COMPREPLY < <(compgen -W \"" +
                    commandNames() +
                    "\" -- \"$cur\"); fi\n"
                    "        return\n"
                    "    fi\n"
                    "    local actions=\"\" options=\"\" folders=0\n"
                    "    case \"${COMP_WORDS[1]}\" in\n"
                    "        help) (( COMP_CWORD == 2 )) && mapfile -t COMPREPLY < <(compgen -W \"" +
                    commandNames() + "\" -- \"$cur\"); return ;;\n";
    std::string values;
    for (const auto& c : commands()) {
        const auto syntax = CommandSyntax::parse(c.name, c.usage);
        std::vector<std::string> options;
        for (const auto& o : syntax.options) {
            options.push_back(o.name);
            if (o.valueName.empty()) continue;
            // After an option that takes a value: its choices, or nothing to offer.
            values += "        \"" + std::string(c.name) + " " + o.name + "\") ";
            values += o.choices.empty() ? "return ;;\n"
                                        : "mapfile -t COMPREPLY < <(compgen -W \"" + joined(o.choices) + "\" -- \"$cur\"); return ;;\n";
        }
        s += "        " + std::string(c.name) + ") actions=\"" + joined(syntax.actions) + "\" options=\"" + joined(options) +
             "\" folders=" + (syntax.takesFolders ? "1" : "0") + " ;;\n";
    }
    s += "        *) return ;;\n"
         "    esac\n";
    if (!values.empty()) s += "    case \"${COMP_WORDS[1]} $prev\" in\n" + values + "    esac\n";
    s += "    if [[ $cur == -* ]]; then\n"
         "        mapfile -t COMPREPLY < <(compgen -W \"$options\" -- \"$cur\")\n"
         "    elif (( COMP_CWORD == 2 )) && [[ -n $actions ]]; then\n"
         "        mapfile -t COMPREPLY < <(compgen -W \"$actions\" -- \"$cur\")\n"
         "    elif (( folders )); then\n"
         "        compopt -o filenames 2>/dev/null\n"
         "        mapfile -t COMPREPLY < <(compgen -d -- \"$cur\")\n"
         "    fi\n"
         "}\n"
         "complete -F _brimvale brimvale\n";
    return s;
}

std::string zshScript() {
    std::string s = "#compdef brimvale\n"
                    "# zsh completion for brimvale, generated from its command table\n"
                    "_brimvale() {\n"
                    "  local -a commands\n"
                    "  commands=(\n";
    for (const auto& c : commands()) s += "    " + quoted(std::string(c.name) + ":" + c.summary) + "\n";
    s += "    ";
    std::string helpEntry = "help:";
    helpEntry += kHelpSummary;
    s += quoted(helpEntry);
    s += "\n  )\n";
    s += "  if (( CURRENT == 2 )); then\n"
         "    if [[ $PREFIX == -* ]]; then\n"
         "      compadd -- " + std::string(kGlobalOptions) + "\n"
         "    else\n"
         "      _describe -t commands 'brimvale command' commands\n"
         "    fi\n"
         "    return\n"
         "  fi\n"
         "  local command=$words[2]\n"
         "  shift words\n"
         "  (( CURRENT-- ))\n"
         "  case $command in\n"
         "    help) (( CURRENT == 2 )) && _describe -t commands 'command' commands ;;\n";
    for (const auto& c : commands()) {
        const auto syntax = CommandSyntax::parse(c.name, c.usage);
        s += "    " + std::string(c.name) + ") _arguments";
        for (const auto& o : syntax.options) {
            std::string argument = o.name; // zsh's "--option:message:action" form
            if (!o.valueName.empty())
                argument += ":" + o.valueName + ":" + (o.choices.empty() ? std::string(" ") : "(" + joined(o.choices) + ")");
            s += " " + quoted(argument);
        }
        if (!syntax.actions.empty()) s += " " + quoted("1:action:(" + joined(syntax.actions) + ")");
        if (syntax.takesFolders) s += " " + quoted("*:folder:_files -/");
        s += " ;;\n";
    }
    s += "  esac\n"
         "}\n"
         "_brimvale \"$@\"\n";
    return s;
}

std::string fishScript() {
    std::string s = "# fish completion for brimvale, generated from its command table\n"
                    "function __brimvale_command --description 'Whether the command line is at this brimvale command'\n"
                    "    set -l words (commandline -opc)\n"
                    "    test (count $words) -ge 2; and test \"$words[2]\" = $argv[1]\n"
                    "end\n"
                    "function __brimvale_first_word --description 'Whether the next word is the first after the command'\n"
                    "    set -l words (commandline -opc)\n"
                    "    test (count $words) -eq $argv[1]\n"
                    "end\n"
                    "complete -c brimvale -f\n"
                    "complete -c brimvale -n '__brimvale_first_word 1' -l version -d 'Print the version'\n"
                    "complete -c brimvale -n '__brimvale_first_word 1' -l help -d 'Every command'\n";
    for (const auto& c : commands())
        s += "complete -c brimvale -n '__brimvale_first_word 1' -a " + std::string(c.name) + " -d " + quoted(c.summary) + "\n";
    s += "complete -c brimvale -n '__brimvale_first_word 1' -a help -d " + quoted(kHelpSummary) + "\n";
    s += "complete -c brimvale -n '__brimvale_command help; and __brimvale_first_word 2' -a " + quoted(commandNames()) + "\n";
    for (const auto& c : commands()) {
        const auto syntax = CommandSyntax::parse(c.name, c.usage);
        const std::string at = "complete -c brimvale -n '__brimvale_command " + std::string(c.name);
        if (!syntax.actions.empty())
            s += at + "; and __brimvale_first_word 2' -a " + quoted(joined(syntax.actions)) + "\n";
        for (const auto& o : syntax.options) {
            s += at + "' -l " + o.name.substr(2);
            if (!o.valueName.empty()) s += " -x" + (o.choices.empty() ? " -d " + quoted(o.valueName) : " -a " + quoted(joined(o.choices)));
            s += "\n";
        }
        if (syntax.takesFolders) s += at + "' -a '(__fish_complete_directories (commandline -ct))'\n";
    }
    return s;
}

} // namespace

std::optional<std::string> completionScript(const std::string& shell) {
    if (shell == "bash") return bashScript();
    if (shell == "zsh") return zshScript();
    if (shell == "fish") return fishScript();
    return std::nullopt;
}

} // namespace bv::cli
