#include "cli/data/record.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>

#include "cli/app/diagnostics.h"
#include "cli/data/sound_record.h"
#include "cli/data/table.h"
#include "cli/data/times.h"

namespace cli {

namespace {

// Missing cells at the beginning of a record take the value of the first number.
void fill_front(std::vector<double> &samples) {
    const auto first = std::ranges::find_if(samples, [](double x) { return !std::isnan(x); });
    if (first != samples.end()) std::fill(samples.begin(), first, *first);
}

void append(Channel &channel, double value, Missing missing) {
    std::vector<double> &samples = channel.samples;
    channel.missing += std::isnan(value);
    const bool held = missing == Missing::Fill && std::isnan(value) && !samples.empty();
    samples.push_back(held ? samples.back() : value);
}

void close(Channel &channel, Missing missing) {
    if (missing == Missing::Fill) fill_front(channel.samples);
    if (channel.has_numbers()) channel.pieces = {{0, channel.samples.size()}};
}

Record read_csv(Source &source, const InputOptions &input, Missing missing) {
    Record record{.name = source.name(), .rate = input.rate.value_or(0), .text = source.rest(), .input = input};
    Source again(record.name, record.text);
    TableReader table(again, input);
    EvenTimes times(record.name);
    while (table.next()) {
        if (table.kind() != LineKind::Data) continue;
        if (!input.rate && table.has_time()) times.add(table.time(), table.line().number, table.time_column());
        record.channels.resize(table.columns().size());
        for (std::size_t i = 0; i < record.channels.size(); ++i) append(record.channels[i], table.values()[i], missing);
    }
    if (!input.rate && table.has_time()) record.rate = times.rate();
    record.width = table.width();
    for (std::size_t i = 0; i < record.channels.size(); ++i) {
        record.channels[i].name = table.columns()[i].name;
        record.channels[i].column = table.columns()[i].index;
        close(record.channels[i], missing);
    }
    return record;
}

// Those that hold numbers, from left to right.
std::vector<std::size_t> columns_of(const Record &record) {
    std::vector<std::size_t> columns;
    for (const Channel &channel : record.channels)
        if (channel.has_numbers()) columns.push_back(channel.column);
    std::ranges::sort(columns);
    return columns;
}

void write_table(const Record &record, Output &out, std::size_t every) {
    Source again(record.name, record.text);
    TableReader table(again, record.input);
    std::vector<double> row(record.channels.size());
    while (table.next()) {
        if (table.kind() == LineKind::Header && record.rename) {
            table.write_header(out, columns_of(record), record.width, record.rename);
            continue;
        }
        if (table.kind() != LineKind::Data) {
            table.write_line(out);
            continue;
        }
        if ((table.rows() - 1) % every != 0) continue;
        for (std::size_t i = 0; i < row.size(); ++i) row[i] = record.channels[i].samples[table.rows() - 1];
        table.write_row(out, row);
        if (out.full()) out.flush();
    }
}

}  // namespace

Record read_record(Source &source, const InputOptions &input, Missing missing) {
    Record record = is_sound(source) ? read_sound(source, input) : read_csv(source, input, missing);
    if (record.length() > INT_MAX) reject("{}: has more than {} samples", record.name, INT_MAX);
    return record;
}

double rate_of(const Record &record) {
    if (record.rate <= 0)
        reject("{}: has no column called time; give the sampling rate, such as --rate 1kHz", record.name);
    return record.rate;
}

void remark_missing(const Record &record) {
    for (const Channel &channel : record.channels) remark_missing(record.name, channel);
}

void remark_missing(const std::string &file, const Channel &channel) {
    if (channel.missing > 0 && channel.has_numbers())
        remark("{}: {}: {} of {} cells are missing; the value before them stands in for them", file, channel.name,
               channel.missing, channel.samples.size());
}

Record read_signals(const InputOptions &input) {
    Source source(input.file);
    return read_signals(source, input);
}

Record read_signals(Source &source, const InputOptions &input) {
    Record record = read_record(source, input);
    std::erase_if(record.channels, [](const Channel &channel) { return !channel.has_numbers(); });
    if (record.channels.empty()) reject("{}: holds no numbers", record.name);
    rate_of(record);
    remark_missing(record);
    return record;
}

void write_record(const Record &record, Output &out, std::size_t every) {
    if (record.sound)
        write_sound(record, out, every);
    else
        write_table(record, out, every);
}

}  // namespace cli
