#include "cli/times/time_names.h"

#include <algorithm>
#include <iterator>

#include "cli/app/number.h"

namespace cli {

namespace {

struct Word {
    std::string_view text;
    double unit = 0;  // s
    bool date = false;
};

// Whole words only: "data" is a date in three languages, and something else in most files.
constexpr Word kWords[] = {{"time"},
                           {"t"},
                           {"timestamp"},
                           {"timestamps"},
                           {"datetime"},
                           {"elapsed"},
                           {"epoch"},
                           {"clock"},
                           {"utc"},
                           {"unixtime"},
                           {"zeit"},
                           {"uhrzeit"},
                           {"zeitstempel"},
                           {"zeitpunkt"},
                           {"messzeit"},
                           {"temps"},
                           {"heure"},
                           {"horodatage"},
                           {"tiempo"},
                           {"hora"},
                           {"tempo"},
                           {"ora"},
                           {"orario"},
                           {"tid"},
                           {"tidpunkt"},
                           {"tidsstempel"},
                           {"tijd"},
                           {"tijdstip"},
                           {"tijdstempel"},
                           {"aika"},
                           {"czas"},
                           {"\u010Das"},
                           {"\u65F6\u95F4"},
                           {"\u6642\u9593"},
                           {"\u6642\u523B"},
                           {"second", 1},
                           {"seconds", 1},
                           {"sec", 1},
                           {"secs", 1},
                           {"sekunden", 1},
                           {"secondes", 1},
                           {"segundos", 1},
                           {"secondi", 1},
                           {"milliseconds", 1e-3},
                           {"millis", 1e-3},
                           {"micros", 1e-6},
                           {"microseconds", 1e-6},
                           {"nanoseconds", 1e-9},
                           {"date", 0, true},
                           {"datum", 0, true},
                           {"fecha", 0, true},
                           {"dato", 0, true}};

// In "unix time" or "time (UTC)" they say nothing of the unit.
constexpr std::string_view kNeutral[] = {"unix",   "utc",      "gmt",      "gps", "local",
                                         "system", "relative", "absolute", "of",  "day"};

struct Unit {
    std::string_view text;
    double seconds = 0;
    TimeName::Shape shape = TimeName::Any;
};
constexpr Unit kUnits[] = {{"s", 1},
                           {"sec", 1},
                           {"secs", 1},
                           {"second", 1},
                           {"seconds", 1},
                           {"sek", 1},
                           {"sekunden", 1},
                           {"ms", 1e-3},
                           {"msec", 1e-3},
                           {"milliseconds", 1e-3},
                           {"us", 1e-6},
                           {"usec", 1e-6},
                           {"microseconds", 1e-6},
                           {"\u00B5s", 1e-6},  // the micro sign
                           {"\u03BCs", 1e-6},  // the Greek letter
                           {"\xB5s", 1e-6},    // the micro sign of Latin-1
                           {"ns", 1e-9},
                           {"nsec", 1e-9},
                           {"nanoseconds", 1e-9},
                           {"min", 60},
                           {"minutes", 60},
                           {"h", 3600},
                           {"hours", 3600},
                           {"days", 86400},
                           {"hh:mm:ss"},
                           {"h:m:s"},
                           {"hh:mm", 0, TimeName::HoursMinutes},
                           {"h:m", 0, TimeName::HoursMinutes},
                           {"mm:ss", 0, TimeName::MinutesSeconds},
                           {"m:s", 0, TimeName::MinutesSeconds},
                           {"f"},
                           {"fff"}};

template <class Table>
const auto *find(const Table &table, std::string_view text) {
    const auto *const row = std::ranges::find(table, text, &std::iter_value_t<decltype(std::begin(table))>::text);
    return row == std::end(table) ? nullptr : row;
}

std::vector<std::string> words_of(std::string_view name) {
    std::vector<std::string> words(1);
    for (const char c : lower(name))
        if (std::string_view(" \t_-./()[]{},\"'").find(c) == std::string_view::npos)
            words.back() += c;
        else if (!words.back().empty())
            words.emplace_back();
    if (words.back().empty()) words.pop_back();
    return words;
}

// "timems" is "time ms".
void divide_glued(std::vector<std::string> &words) {
    constexpr std::string_view kTime = "time";
    if (words.empty() || !words[0].starts_with(kTime) || find(kWords, words[0]) != nullptr) return;
    const std::string rest = words[0].substr(kTime.size());
    if (find(kUnits, rest) == nullptr) return;
    words[0] = kTime;
    words.insert(words.begin() + 1, rest);
}

// T alone is a temperature, and T_min the lowest one.
bool is_temperature(std::string_view name, double unit) {
    return name.starts_with('T') && (name.size() == 1 || !(unit > 0 && unit <= 1));
}

}  // namespace

// Words for times come first, then units.
std::optional<TimeName> time_name(std::string_view name) {
    std::vector<std::string> words = words_of(name);
    divide_glued(words);
    TimeName result{.date = true};
    bool found = false;
    for (const std::string &text : words) {
        const Word *const word = find(kWords, text);
        const Unit *const unit = found ? find(kUnits, text) : nullptr;
        const bool says_nothing = std::ranges::find(kNeutral, text) != std::end(kNeutral);
        if (word == nullptr && unit == nullptr && !says_nothing) return {};
        if (word != nullptr) result.date = result.date && word->date;
        if (const double seconds = unit != nullptr ? unit->seconds : word != nullptr ? word->unit : 0; seconds > 0)
            result.unit = seconds;
        if (unit != nullptr && unit->shape != TimeName::Any) result.shape = unit->shape;
        found = found || word != nullptr;
    }
    if (!found || (words[0] == "t" && is_temperature(trimmed(name), result.unit))) return {};
    return result;
}

double time_unit(std::string_view text) {
    const std::vector<std::string> words = words_of(text);
    const Unit *const unit = words.size() == 1 ? find(kUnits, words[0]) : nullptr;
    return unit == nullptr ? 0 : unit->seconds;
}

std::vector<std::size_t> time_columns(const std::vector<std::string> &names) {
    std::vector<std::size_t> columns, dates;
    for (std::size_t i = 0; i < names.size(); ++i)
        if (const std::optional<TimeName> name = time_name(names[i])) (name->date ? dates : columns).push_back(i);
    columns.insert(columns.end(), dates.begin(), dates.end());
    return columns;
}

}  // namespace cli
