#include "cli/app/program.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "cli/app/commands.h"
#include "cli/app/diagnostics.h"
#include "cli/app/number.h"
#include "cli/files/output.h"
#include "cli/files/signals.h"
#include "cli/input/source.h"
#include "cli/plot/options.h"

namespace cli {

namespace {

constexpr const char *kExamples =
    "  mensura demo\n"
    "  mensura design lowpass --cutoff 40Hz --rate 360Hz\n"
    "  mensura filter lowpass --cutoff 40Hz --rate 360Hz --plot=ecg.svg ecg.csv > clean.csv\n"
    "  mensura spectrum --window hanning --db ecg.csv\n";

struct NamedCommand {
    std::string_view name;
    void (*add)(const Command &program);
};
constexpr std::string_view kCompletion = "completion";
constexpr NamedCommand kCommands[] = {{"design", add_design},
                                      {"filter", add_filter},
                                      {"decimate", add_decimate},
                                      {"spectrum", add_spectrum},
                                      {"spectrogram", add_spectrogram},
                                      {"tone", add_tone},
                                      {"stats", add_stats},
                                      {"window", add_window},
                                      {"smooth", add_smooth},
                                      {"derive", add_derive},
                                      {"despike", add_despike},
                                      {"average", add_average},
                                      {"track", add_track},
                                      {"roots", add_roots},
                                      {"demo", add_demo},
                                      {kCompletion, add_completion}};

// In the list of commands, a command shows only the first line of its description.
class HelpFormatter : public CLI::Formatter {
  public:
    HelpFormatter() { column_width(28); }
    std::string make_subcommand(const CLI::App *command) const override {
        const std::string text = command->get_description();
        std::ostringstream line;
        CLI::detail::format_help(line, command->get_name(), text.substr(0, text.find('\n')), get_column_width());
        return line.str();
    }
    std::string make_option_opts(const CLI::Option *option) const override {
        const std::string name = option->get_type_name();
        return name.empty() || name == "TEXT" || name == "BOOLEAN" ? "" : (name.front() == '[' ? name : " " + name);
    }
};

// Negative numbers are arguments, not options.  CLI11 knows that of -6 but not of -.5, which becomes -0.5.  --plot
// takes the next argument as its value only if that ends like the name of a picture; otherwise it gets a value here.
// An option with nothing behind its = has an empty value, where CLI11 would take the next argument.
std::vector<std::string> arguments_of(int argc, char **argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    for (std::size_t i = 0; i < arguments.size() && arguments[i] != "--"; ++i) {
        const auto next = arguments.begin() + static_cast<std::ptrdiff_t>(i) + 1;
        std::string &argument = arguments[i];
        if (argument.starts_with("-.") && parse_number(argument)) argument.insert(1, "0");
        if (argument.starts_with("--") && argument.find('=') + 1 == argument.size()) {
            argument.pop_back();
            arguments.insert(next, "");
            ++i;
        } else if (argument == "--plot") {
            const bool named = next != arguments.end() && is_picture(*next);
            argument += std::string("=") + (named ? *next : kPlotInTerminal);
            if (named) arguments.erase(next);
        }
    }
    return {arguments.rbegin(), arguments.rend()};  // CLI11 takes them in reverse
}

int report_error(Status status, const std::string &line) {
    report(line);
    return static_cast<int>(status);
}

const CLI::App &chosen_command(const CLI::App &program) {
    const std::vector<const CLI::App *> commands =
        program.get_subcommands([](const CLI::App *app) { return app->parsed(); });
    return commands.empty() ? program : *commands.front();
}

std::string help_of(const CLI::App &app) { return app.help(app.get_parent() == nullptr ? "" : "mensura"); }

int report_wrong_call(const std::string &line) {
    return report_error(Status::BadInput, fmt::format("{}; --help shows what would be right", line));
}

// CLI11 names all that it could not place, also a file that follows an unknown option as if it were its value.
std::string unexpected_word(const CLI::App &program, const std::string &error) {
    std::vector<std::string> words = program.remaining(true);
    std::erase(words, "--");
    if (words.empty()) return error;
    const std::string command = chosen_command(program).get_name();
    for (const std::string &word : words)
        if (word.starts_with('-') && word != "-" && !parse_number(word))
            return fmt::format("{} has no option {}", command, word.substr(0, word.find('=')));
    return fmt::format("\"{}\" is one argument too many for {}", words.front(), command);
}

int show(const std::string &text) {
    Output out("");
    out.write(text);
    out.commit();
    return 0;
}

// For a call without a command, or without input.
int show_help_instead(const CLI::App &program) {
    to_stderr(help_of(chosen_command(program)));
    return static_cast<int>(Status::BadInput);
}

// Every command's help in one, for the manual page.
std::string all_help(const CLI::App &program) {
    std::string text = program.help();
    for (const CLI::App *command : program.get_subcommands([](const CLI::App *) { return true; }))
        text += fmt::format("\nmensura {}:\n{}", command->get_name(), help_of(*command));
    return text;
}

}  // namespace

int run(CLI::App &program, int argc, char **argv) {
    try {
        program.parse(arguments_of(argc, argv));
        return argc > 1 ? 0 : show_help_instead(program);
    } catch (const CLI::CallForHelp &) {
        return show(help_of(chosen_command(program)));
    } catch (const CLI::CallForAllHelp &) {
        return show(all_help(program));
    } catch (const CLI::CallForVersion &) {
        return show("mensura " MENSURA_CLI_VERSION "\n");
    } catch (const CLI::ExtrasError &error) {
        if (&chosen_command(program) != &program) return report_wrong_call(unexpected_word(program, error.what()));
        return report_wrong_call(fmt::format("there is no command \"{}\"", argv[1]));
    } catch (const CLI::ParseError &error) {
        return report_wrong_call(error.what());
    } catch (const InputIsTerminal &) {
        return show_help_instead(program);
    }
}

void describe(CLI::App &program, std::string_view command) {
    program.description(
        with_examples("Measurement data filtered, transformed and looked at from the command line.", kExamples));
    program.name("mensura");
    program.formatter(std::make_shared<HelpFormatter>());
    program.require_subcommand(0, 1);
    program.set_help_flag("-h,--help", "show this help");
    program.set_help_all_flag("--help-all", "show the help of every command");
    program.set_version_flag("-V,--version", MENSURA_CLI_VERSION, "show the version");
    program.footer(
        "Tables are CSV, with or without a line of names; what is not changed comes back as it was.\n"
        "Missing cells stay missing; where a value is needed, the last one before them is used (track predicts).\n"
        "Data go to standard output, messages to standard error.\n"
        "Exit status: 0 done, 1 the work failed, 2 the call or the input is wrong.");
    const Command commands(&program);
    const bool alone = command != kCompletion &&
                       std::ranges::find(kCommands, command, &NamedCommand::name) != std::ranges::end(kCommands);
    for (const auto &[name, add] : kCommands)
        if (!alone || name == command) add(commands);
}

int run_and_report(int argc, char **argv) {
    try {
        CLI::App program;
        describe(program, argc > 1 ? argv[1] : "");
        return run(program, argc, argv);
    } catch (const ReaderGone &gone) {
        end_by_broken_pipe();
        return report_error(gone.status(), gone.what());
    } catch (const Failure &failure) {
        return report_error(failure.status(), failure.what());
    } catch (const std::bad_alloc &) {
        return report_error(Status::Failed, "out of memory");
    } catch (const std::exception &error) {
        return report_error(Status::Failed, error.what());
    }
}

}  // namespace cli
