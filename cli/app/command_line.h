// The command line as the commands see it.  command_line.cpp and program.cpp alone know CLI11, whose headers cost three
// seconds of compilation in every file that includes them.
#pragma once

#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace cli {

using Words = std::vector<std::string>;
using WordsOfOptions = std::map<const CLI::Option *, Words>;

// An option, or an argument without a dash, of a command.
class Option {
  public:
    Option(CLI::Option *option, std::shared_ptr<WordsOfOptions> words);

    Option &required();
    Option &type_name(const std::string &name);                    // what stands for its value in the help
    Option &excludes(std::initializer_list<const char *> others);  // options added before
    Option &one_at_a_time();                                       // may be repeated, with one value each
    Option &words(Words words);                                    // what its value may be, for completion

  private:
    CLI::Option *option_;
    std::shared_ptr<WordsOfOptions> words_;
};

// What is known of an option or of an argument, for completion.
struct OptionFacts {
    Words names;        // "-o", "--output"; of an argument its one name without a dash, as "FILE"
    std::string value;  // what stands for its value in the help; "" for a flag
    std::string help;
    Words words;  // that its value may be; none: any
    bool repeatable;

    bool is_argument() const { return !names.front().starts_with('-'); }
    bool takes_value() const { return !value.empty(); }
    bool value_is_optional() const { return value.starts_with("[="); }
    bool takes_file() const { return value.find("FILE") != std::string::npos; }
};

struct CommandFacts {
    std::string name, line;
    std::vector<OptionFacts> options;  // and arguments
};

class Command {
  public:
    explicit Command(CLI::App *app) : app_(app), words_(std::make_shared<WordsOfOptions>()) {}

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

    CommandFacts facts() const;
    std::vector<CommandFacts> commands() const;

  private:
    Command(CLI::App *app, std::shared_ptr<WordsOfOptions> words) : app_(app), words_(std::move(words)) {}

    CLI::App *app_;
    std::shared_ptr<WordsOfOptions> words_;  // of the whole program
};

// Ends a wrong call with a message that names the option and the reason.
[[noreturn]] void reject_option(const std::string &option, const std::string &reason);

// The first part of the help of the program or of a command: a text, and below it examples of calls.
std::string with_examples(const std::string &text, const std::string &examples);

}  // namespace cli
