// mensura completion: a script by which a shell completes commands, options, their words and files.
#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cli/app/commands.h"
#include "cli/app/names.h"
#include "cli/app/options.h"
#include "cli/files/output.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  source <(mensura completion bash)\n"
    "  mensura completion zsh > ~/.zfunc/_mensura    # ~/.zfunc stands in fpath\n"
    "  mensura completion fish > ~/.config/fish/completions/mensura.fish\n";

// A text in single quotes, as all three shells take it.
std::string quoted(std::string_view text) {
    std::string result = "'";
    for (const char c : text) result += c == '\'' ? "'\\''" : std::string(1, c);
    return result + "'";
}

std::string blank_separated(const Words &words) { return fmt::format("{}", fmt::join(words, " ")); }

// What an option is for, without the details and without its words, which are offered anyway.
std::string brief(const OptionFacts &option) {
    const std::string text = option.help.substr(0, option.help.find(';'));
    return option.words.empty() ? text : text.substr(0, text.find(": "));
}

// What may stand there: words, "FILE" for files, or "", which is known to the user alone.
std::string choices(const OptionFacts &option) {
    if (!option.words.empty()) return blank_separated(option.words);
    return option.takes_file() ? "FILE" : "";
}

// ---- bash -----------------------------------------------------------------------------------------------------------

constexpr const char *kBashStart = R"(# Completion of mensura for bash, made by: mensura completion bash
_mensura() {{
    local current=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD - 1]}}
    local commands='{}'
    local options valued arguments=('') choices assigned='' value='' files='' position=0 i
    if [[ $current == = ]]; then
        current='' assigned=yes
    elif [[ $previous == = ]]; then
        previous=${{COMP_WORDS[COMP_CWORD - 2]}} assigned=yes
    fi
    case ${{COMP_WORDS[1]}} in
)";

constexpr const char *kBashEnd = R"(    esac
    if ((COMP_CWORD == 1)); then
        choices=$commands
    elif [[ $assigned || " $valued " == *" $previous "* ]]; then
        choices=$value
    elif [[ $current == -* ]]; then
        choices=$options
    else
        for ((i = 2; i < COMP_CWORD; ++i)); do
            if [[ ${COMP_WORDS[i + 1]} == = ]]; then
                ((i += 2))
            elif [[ " $valued " == *" ${COMP_WORDS[i]} "* ]]; then
                ((++i))
            elif [[ ${COMP_WORDS[i]} != -* ]]; then
                ((++position))
            fi
        done
        choices=${arguments[position < ${#arguments[@]} ? position : ${#arguments[@]} - 1]}
        files=${arguments[*]}
    fi
    COMPREPLY=()
    # bash itself completes files where this finds nothing
    [[ $choices == FILE ]] && return
    [[ $files == *FILE* ]] || compopt +o default 2> /dev/null
    COMPREPLY=($(compgen -W "$choices" -- "$current"))
}
complete -o default -F _mensura mensura
)";

std::string bash_command(const CommandFacts &command) {
    Words options, valued, arguments;
    std::string values;
    for (const OptionFacts &option : command.options) {
        if (option.is_argument()) {
            arguments.push_back(quoted(choices(option)));
            continue;
        }
        std::ranges::copy(option.names, std::back_inserter(options));
        if (option.takes_value() && !option.value_is_optional())
            std::ranges::copy(option.names, std::back_inserter(valued));
        if (!choices(option).empty())
            values +=
                fmt::format("            {}) value={} ;;\n", fmt::join(option.names, " | "), quoted(choices(option)));
    }
    if (arguments.empty()) arguments.push_back("''");
    return fmt::format(
        "    {})\n        options='{}'\n        valued='{}'\n        arguments=({})\n        case $previous in\n{}"
        "        esac\n        ;;\n",
        command.name, fmt::join(options, " "), fmt::join(valued, " "), fmt::join(arguments, " "), values);
}

std::string bash_script(const CommandFacts &program, const std::vector<CommandFacts> &commands) {
    Words first;
    for (const CommandFacts &command : commands) first.push_back(command.name);
    for (const OptionFacts &option : program.options) std::ranges::copy(option.names, std::back_inserter(first));
    std::string script = fmt::format(kBashStart, fmt::join(first, " "));
    for (const CommandFacts &command : commands) script += bash_command(command);
    return script + kBashEnd;
}

// ---- zsh ------------------------------------------------------------------------------------------------------------

constexpr const char *kZshStart = R"(#compdef mensura
# Completion of mensura for zsh, made by: mensura completion zsh
_mensura() {
    local context state line
    typeset -A opt_args
)";

constexpr const char *kZshCommands = R"(        ': :->command' '*:: :->argument'
    case $state in
    command)
        _describe -t commands command commands
        ;;
    argument)
        case $words[1] in
)";

constexpr const char *kZshEnd = R"(        esac
        ;;
    esac
}
if [[ $funcstack[1] == _mensura ]]; then
    _mensura "$@"
else
    compdef _mensura mensura
fi
)";

std::string escaped(std::string_view text, std::string_view special) {
    std::string result;
    for (const char c : text) {
        if (special.find(c) != std::string_view::npos) result += '\\';
        result += c;
    }
    return result;
}

std::string zsh_action(const OptionFacts &option) {
    if (!option.words.empty()) return fmt::format("({})", blank_separated(option.words));
    return option.takes_file() ? "_files" : " ";
}

// -o+ and --output= take their value from the same word or the next, --plot=- from the same word only.
std::string zsh_option(const OptionFacts &option) {
    std::string specs;
    for (const std::string &name : option.names) {
        std::string spec = option.repeatable ? "*" : fmt::format("({})", blank_separated(option.names));
        spec += name;
        if (option.takes_value()) spec += name.starts_with("--") ? "=" : "+";
        if (option.value_is_optional()) spec += "-";
        spec += fmt::format("[{}]", escaped(brief(option), "[]\\"));
        if (option.takes_value())
            spec += fmt::format("{}{}:{}", option.value_is_optional() ? "::" : ":", escaped(option.value, ":\\"),
                                zsh_action(option));
        specs += fmt::format(" \\\n                {}", quoted(spec));
    }
    return specs;
}

std::string zsh_command(const CommandFacts &command) {
    std::string specs;
    int position = 0;
    for (const OptionFacts &option : command.options)
        if (!option.is_argument())
            specs += zsh_option(option);
        else
            specs += fmt::format(" \\\n                {}",
                                 quoted(fmt::format("{}:{}:{}", option.repeatable ? "*" : fmt::format("{}", ++position),
                                                    option.names.front(), zsh_action(option))));
    return fmt::format("        {})\n            _arguments{}\n            ;;\n", command.name, specs);
}

std::string zsh_script(const CommandFacts &program, const std::vector<CommandFacts> &commands) {
    std::string script = kZshStart;
    script += "    local -a commands=(\n";
    for (const CommandFacts &command : commands)
        script += fmt::format("        {}\n", quoted(command.name + ":" + escaped(command.line, ":\\")));
    script += "    )\n    _arguments -C";
    for (const OptionFacts &option : program.options) script += zsh_option(option);
    script += std::string(" \\\n") + kZshCommands;
    for (const CommandFacts &command : commands) script += zsh_command(command);
    return script + kZshEnd;
}

// ---- fish -----------------------------------------------------------------------------------------------------------

constexpr const char *kFishStart = R"(# Completion of mensura for fish, made by: mensura completion fish
function __mensura_first
    test (count (commandline -opc)) -eq 1
end
function __mensura_in
    set -l before (commandline -opc)
    test (count $before) -ge 2; and test $before[2] = $argv[1]
end
complete -c mensura -f
)";

std::string fish_value(const OptionFacts &option) {
    if (!option.takes_value()) return "";
    if (option.value_is_optional()) return " -F";
    if (!option.words.empty()) return " -x -a " + quoted(blank_separated(option.words));
    return option.takes_file() ? " -r -F" : " -x";
}

std::string fish_option(const std::string &condition, const OptionFacts &option) {
    std::string names;
    for (const std::string &name : option.names)
        names += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    return fmt::format("complete -c mensura -n {}{}{} -d {}\n", quoted(condition), names, fish_value(option),
                       quoted(brief(option)));
}

// Words are offered until one of them stands there.
std::string fish_argument(const std::string &command, const OptionFacts &argument) {
    if (argument.words.empty())
        return argument.takes_file() ? fmt::format("complete -c mensura -n '__mensura_in {}' -F\n", command) : "";
    return fmt::format("complete -c mensura -n '__mensura_in {0}; and not __fish_seen_subcommand_from {1}' -a '{1}'\n",
                       command, blank_separated(argument.words));
}

std::string fish_script(const CommandFacts &program, const std::vector<CommandFacts> &commands) {
    std::string script = kFishStart;
    for (const OptionFacts &option : program.options) script += fish_option("__mensura_first", option);
    for (const CommandFacts &command : commands) {
        script +=
            fmt::format("complete -c mensura -n __mensura_first -a {} -d {}\n", command.name, quoted(command.line));
        for (const OptionFacts &option : command.options)
            script += option.is_argument() ? fish_argument(command.name, option)
                                           : fish_option("__mensura_in " + command.name, option);
    }
    return script;
}

using Script = std::string (*)(const CommandFacts &program, const std::vector<CommandFacts> &commands);

struct Shell {
    const char *name;
    Script script;
};
constexpr Shell kShells[] = {{"bash", bash_script}, {"zsh", zsh_script}, {"fish", fish_script}};

struct Options {
    Script script = nullptr;
    std::string output;
};

}  // namespace

void add_completion(const Command &program) {
    const auto options = std::make_shared<Options>();
    const Command app =
        program.add_command("completion", "print a script by which a shell completes mensura", kExamples);
    add_choice(
        app, "SHELL", kShells, &Shell::name, [options](const Shell &shell) { options->script = shell.script; },
        "one of {}")
        .required();
    add_output(app, options->output);
    app.callback([options, program] {
        Output out(options->output);
        out.write(options->script(program.facts(), program.commands()));
        out.commit();
    });
}

}  // namespace cli
