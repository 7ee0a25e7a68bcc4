#include "cli/app/command_line.h"

#include <CLI/CLI.hpp>
#include <utility>

namespace cli {

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

Command Command::add_command(const std::string &name, const std::string &line, const std::string &examples) const {
    CLI::App *const command = app_->add_subcommand(name, with_examples(line, examples));
    command->set_help_all_flag();  // --help-all belongs to the program, not to its commands
    return Command(command);
}

Option Command::add_option(const std::string &name, std::string &value, const std::string &help) const {
    return Option(app_->add_option(name, value, help));
}

Option Command::add_option(const std::string &name, std::vector<std::string> &values, const std::string &help) const {
    return Option(app_->add_option(name, values, help));
}

Option Command::add_option(const std::string &name, std::function<void(const std::string &)> take,
                           const std::string &help) const {
    return Option(app_->add_option_function<std::string>(name, take, help));
}

Option Command::add_list(const std::string &name, std::function<void(const std::vector<std::string> &)> take,
                         const std::string &help) const {
    return Option(app_->add_option_function<std::vector<std::string>>(name, take, help)).one_at_a_time();
}

Option Command::add_flag(const std::string &name, bool &value, const std::string &help) const {
    return Option(app_->add_flag(name, value, help));
}

Option Command::add_flag(const std::string &name, std::function<void()> take, const std::string &help) const {
    return Option(app_->add_flag_callback(name, std::move(take), help));
}

void Command::callback(std::function<void()> run) const { app_->callback(std::move(run)); }

void reject_option(const std::string &option, const std::string &reason) { throw CLI::ValidationError(option, reason); }

std::string with_examples(const std::string &text, const std::string &examples) {
    return text + "\n\nExamples:\n" + examples;
}

}  // namespace cli
