// The command line as the commands see it.  command_line.cpp and program.cpp alone know CLI11, whose headers cost three
// seconds of compilation in every file that includes them.
#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace cli {

// An option, or an argument without a dash, of a command.
class Option {
  public:
    explicit Option(CLI::Option *option) : option_(option) {}

    Option &required();
    Option &type_name(const std::string &name);                    // what stands for its value in the help
    Option &excludes(std::initializer_list<const char *> others);  // options added before
    Option &one_at_a_time();                                       // may be repeated, with one value each

  private:
    CLI::Option *option_;
};

class Command {
  public:
    explicit Command(CLI::App *app) : app_(app) {}

    // A command of this program, with the line that describes it and the examples that its help begins with.
    Command add_command(const std::string &name, const std::string &line, const std::string &examples) const;

    Option add_option(const std::string &name, std::string &value, const std::string &help) const;
    Option add_option(const std::string &name, std::vector<std::string> &values, const std::string &help) const;
    Option add_option(const std::string &name, std::function<void(const std::string &)> take,
                      const std::string &help) const;
    // May be repeated, with one value each; `take` gets them all.
    Option add_list(const std::string &name, std::function<void(const std::vector<std::string> &)> take,
                    const std::string &help) const;
    Option add_flag(const std::string &name, bool &value, const std::string &help) const;
    Option add_flag(const std::string &name, std::function<void()> take, const std::string &help) const;
    void callback(std::function<void()> run) const;

  private:
    CLI::App *app_;
};

// Ends a wrong call with a message that names the option and the reason.
[[noreturn]] void reject_option(const std::string &option, const std::string &reason);

// The first part of the help of the program or of a command: a text, and below it examples of calls.
std::string with_examples(const std::string &text, const std::string &examples);

}  // namespace cli
