#include "cli/app/command_line.h"

#include <CLI/CLI.hpp>
#include <utility>

namespace cli {

namespace {

Words names_of(const CLI::Option &option) {
    if (option.get_positional()) return {option.get_name(true)};
    Words names;
    for (const std::string &name : option.get_snames()) names.push_back("-" + name);
    for (const std::string &name : option.get_lnames()) names.push_back("--" + name);
    return names;
}

// Arguments without a type name stand for themselves.
std::string value_of(const CLI::Option &option) {
    if (option.get_items_expected_max() == 0) return "";
    const std::string &type = option.get_type_name();
    return type == "TEXT" || type.empty() ? option.get_name(true) : type;
}

bool is_repeatable(const CLI::Option &option) {
    return option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll || option.get_items_expected_max() > 1;
}

CommandFacts facts_of(const CLI::App &app, const WordsOfOptions &words) {
    const std::string text = app.get_description();
    CommandFacts facts{app.get_name(), text.substr(0, text.find('\n')), {}};
    for (const CLI::Option *option : app.get_options()) {
        const auto known = words.find(option);
        facts.options.push_back({names_of(*option), value_of(*option), option->get_description(),
                                 known == words.end() ? Words() : known->second, is_repeatable(*option)});
    }
    return facts;
}

// An unset variable of the shell, as in mensura stats "$FILE".
std::string refuse_empty(const std::string &value) { return value.empty() ? "must not be empty" : ""; }

}  // namespace

Option::Option(CLI::Option *option, std::shared_ptr<WordsOfOptions> words) : option_(option), words_(std::move(words)) {
    if (option_->get_items_expected_max() > 0) option_->check(refuse_empty);
}

Option &Option::required() {
    option_->required();
    return *this;
}

Option &Option::type_name(const std::string &name) {
    option_->type_name(name);
    return *this;
}

Option &Option::excludes(std::initializer_list<const char *> others) {
    for (const char *other : others) option_->excludes(other);
    return *this;
}

Option &Option::one_at_a_time() {
    option_->expected(1)->allow_extra_args(false)->take_all();
    return *this;
}

Option &Option::words(Words words) {
    (*words_)[option_] = std::move(words);
    return *this;
}

Command Command::add_command(const std::string &name, const std::string &line, const std::string &examples) const {
    CLI::App *const command = app_->add_subcommand(name, with_examples(line, examples));
    command->set_help_all_flag();  // --help-all belongs to the program, not to its commands
    return Command(command, words_);
}

Option Command::add_option(const std::string &name, std::string &value, const std::string &help) const {
    return Option(app_->add_option(name, value, help), words_);
}

Option Command::add_option(const std::string &name, std::vector<std::string> &values, const std::string &help) const {
    return Option(app_->add_option(name, values, help), words_);
}

Option Command::add_option(const std::string &name, std::function<void(const std::string &)> take,
                           const std::string &help) const {
    return Option(app_->add_option_function<std::string>(name, take, help), words_);
}

Option Command::add_list(const std::string &name, std::function<void(const std::vector<std::string> &)> take,
                         const std::string &help) const {
    return Option(app_->add_option_function<std::vector<std::string>>(name, take, help), words_).one_at_a_time();
}

Option Command::add_flag(const std::string &name, bool &value, const std::string &help) const {
    return Option(app_->add_flag(name, value, help), words_);
}

Option Command::add_flag(const std::string &name, std::function<void()> take, const std::string &help) const {
    return Option(app_->add_flag_callback(name, std::move(take), help), words_);
}

void Command::callback(std::function<void()> run) const { app_->callback(std::move(run)); }

CommandFacts Command::facts() const { return facts_of(*app_, *words_); }

std::vector<CommandFacts> Command::commands() const {
    std::vector<CommandFacts> result;
    for (const CLI::App *command : app_->get_subcommands([](const CLI::App *) { return true; }))
        result.push_back(facts_of(*command, *words_));
    return result;
}

void reject_option(const std::string &option, const std::string &reason) { throw CLI::ValidationError(option, reason); }

std::string with_examples(const std::string &text, const std::string &examples) {
    return text + "\n\nExamples:\n" + examples;
}

}  // namespace cli
