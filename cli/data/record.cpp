#include "cli/data/record.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <span>
#include <utility>

#include "cli/app/diagnostics.h"
#include "cli/sound/sound_record.h"
#include "cli/table/table.h"
#include "cli/times/gap_report.h"
#include "cli/times/record_times.h"

namespace cli {

namespace {

// The line of each row.  Most rows follow each other: only where they do not, after a comment, is a line kept.
class RowLines {
  public:
    void add(std::size_t line) {
        if (runs_.empty() || line != runs_.back().line + (rows_ - runs_.back().row)) runs_.push_back({rows_, line});
        ++rows_;
    }
    std::size_t rows() const { return rows_; }
    std::size_t of(std::size_t row) const {
        const Run run = *(std::ranges::upper_bound(runs_, row, {}, &Run::row) - 1);
        return run.line + (row - run.row);
    }

  private:
    struct Run {
        std::size_t row, line;  // of its first row
    };
    std::vector<Run> runs_;
    std::size_t rows_ = 0;
};

// Runs of samples that no more than `most` missing ones interrupt.  What is missing at an end belongs to the run next
// to it if it is that short.
std::vector<Piece> pieces_of(std::span<const double> samples, std::size_t most) {
    std::vector<Piece> pieces;
    std::size_t missing = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (std::isnan(samples[i])) {
            ++missing;
            continue;
        }
        const bool anew = pieces.empty() || missing > most;
        if (anew) pieces.push_back({missing > most ? i : i - missing, i});
        pieces.back().end = i + 1;
        missing = 0;
    }
    if (!pieces.empty() && missing <= most) pieces.back().end = samples.size();
    return pieces;
}

void close(Channel &channel, const Record &record, Missing missing) {
    channel.missing =
        static_cast<std::size_t>(std::ranges::count_if(channel.samples, [](double x) { return std::isnan(x); }));
    if (!channel.has_numbers()) return;
    const bool split = record.input.gaps == GapPolicy::Split;
    channel.pieces =
        split ? pieces_of(channel.samples, short_hole(record.rate)) : std::vector<Piece>{{0, channel.samples.size()}};
    if (missing == Missing::Keep) return;
    for (const Piece &piece : channel.pieces) hold(samples_of(channel, piece));
    hold(channel.samples);
}

// Puts the samples of missing rows in, so that all are even: as many as there are or, where none is needed beyond the
// end of a piece, as tell that the hole is long.
void insert(const std::vector<MissingRows> &holes, Record &record) {
    if (holes.empty()) return;
    constexpr std::size_t kMostTimes = 10, kMostCells = 10'000'000;  // more than the rows, and cells anyway
    const bool split = record.input.gaps == GapPolicy::Split;
    const std::size_t rows = record.length(), most = split ? short_hole(record.rate) + 1 : kMostHeld;
    std::size_t row = 0, shift = 0, left_out = 0;
    for (const MissingRows &hole : holes) {
        for (; row < hole.row; ++row) record.sample_of_row.push_back(row + shift);
        shift += std::min(hole.count, most);
        if (split && hole.count > most) {
            left_out += hole.count - most;
            record.left_out.push_back({hole.row + shift, left_out});
        }
        if (!split && hole.count > most && record.cut_hole == 0) record.cut_hole = hole.row;
    }
    for (; row < rows; ++row) record.sample_of_row.push_back(row + shift);
    record.missing_rows = shift;
    if (shift > kMostTimes * rows + kMostCells / record.channels.size())
        reject("{}: the holes in its times are {} times as long as the rest; --gaps split leaves them out", record.name,
               shift / rows);
    for (Channel &channel : record.channels) {
        std::vector<double> even(rows + shift, kMissing);
        for (std::size_t i = 0; i < rows; ++i) even[record.sample_of_row[i]] = channel.samples[i];
        channel.samples = std::move(even);
    }
}

// Reports the cells that are missing in a row, and refuses them under --gaps error.  `lines` has the line of each row.
void report_cells(const Record &record, const Channel &channel, const RowLines &lines, GapReport &report) {
    const std::size_t most = short_hole(record.rate);
    std::size_t cells = 0, first = 0;
    for (std::size_t row = 0; row <= lines.rows(); ++row) {
        const bool missing = row < lines.rows() && std::isnan(channel.samples[record.sample_of(row)]);
        if (missing && cells++ == 0) first = row;
        if (missing) continue;
        if (cells > most) report.cells_missing(lines.of(first), channel.name, cells, record.rate, first == 0);
        cells = 0;
    }
}

void refuse_missing(const Record &record, const TableReader &table, const RowLines &lines, const GapReport &report) {
    for (std::size_t row = 0; row < lines.rows(); ++row)
        for (std::size_t i = 0; i < record.channels.size(); ++i)
            if (table.columns()[i].kind == Column::Numbers && std::isnan(record.channels[i].samples[row]))
                report.cell_missing(lines.of(row), table.columns()[i].index, table.columns()[i].name);
}

Record read_csv(Source &source, const InputOptions &input, Missing missing) {
    Record record{.name = source.name(), .text = source.rest(), .input = input};
    Source again(record.name, record.text);
    TableReader table(again, input);
    const auto line_ends = static_cast<std::size_t>(std::ranges::count(record.text, '\n'));
    RecordTimes times(record.name, input);
    RowLines lines;
    while (table.next()) {
        if (table.kind() != LineKind::Data) continue;
        times.add(table);
        lines.add(table.line().number);
        if (record.channels.empty()) {
            // A row has a byte at least for each cell, its separator or the line's end.
            const std::size_t most_rows = std::min(line_ends, record.text.size() / table.width()) + 1;
            record.channels.resize(table.columns().size());
            for (Channel &channel : record.channels) channel.samples.reserve(most_rows);
            times.reserve(most_rows);
        }
        for (std::size_t i = 0; i < record.channels.size(); ++i)
            record.channels[i].samples.push_back(table.values()[i]);
    }
    record.width = table.width();
    record.rate = times.rate();
    record.time_doubt = times.doubt().empty() ? table.time_doubt() : times.doubt();
    GapReport report(record.name, input);
    const std::vector<MissingRows> holes = times.holes(report, record.rate);
    if (input.gaps == GapPolicy::Error) refuse_missing(record, table, lines, report);
    insert(holes, record);
    for (std::size_t i = 0; i < record.channels.size(); ++i) {
        const Column &column = table.columns()[i];
        Channel &channel = record.channels[i];
        channel.name = column.name;
        channel.unit = column.unit;
        channel.column = column.index;
        channel.text = column.kind == Column::Text;
        if (column.kind == Column::Numbers) report_cells(record, channel, lines, report);
        close(channel, record, missing);
    }
    report.close();
    record.remarks = times.remarks();
    for (std::string &line : report.take_lines()) record.remarks.push_back(std::move(line));
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

// Which rows are kept where every n-th sample is: those that lie there, counted from the first of a run.
class Grid {
  public:
    Grid(const Record &record, std::size_t every) : record_(record), every_(every), most_(short_hole(record.rate)) {}

    bool keeps(std::size_t row) {
        const std::size_t sample = record_.sample_of(row);
        const bool split = record_.input.gaps == GapPolicy::Split;
        if (split && row > 0 && sample - record_.sample_of(row - 1) > most_ + 1) origin_ = sample;
        return (sample - origin_) % every_ == 0;
    }

  private:
    const Record &record_;
    std::size_t every_, most_, origin_ = 0;
};

// A line that is no row, with new names and units where the record has them.
void write_other(const Record &record, const TableReader &table, Output &out) {
    const bool units = table.kind() == LineKind::Units;
    if (!record.rename || (table.kind() != LineKind::Header && !units)) return table.write_line(out);
    table.write_header(out, columns_of(record), record.width, units ? Rename(derivative_unit) : record.rename);
}

void write_table(const Record &record, Output &out, std::size_t every) {
    Source again(record.name, record.text);
    TableReader table(again, record.input);
    Grid grid(record, every);
    std::vector<double> row(record.channels.size());
    while (table.next()) {
        if (table.kind() != LineKind::Data) {
            write_other(record, table, out);
            continue;
        }
        if (!grid.keeps(table.rows() - 1)) continue;
        const std::size_t sample = record.sample_of(table.rows() - 1);
        for (std::size_t i = 0; i < row.size(); ++i) row[i] = record.channels[i].samples[sample];
        table.write_row(out, row);
        if (out.full()) out.flush();
    }
}

}  // namespace

void hold(std::span<double> samples) {
    const auto first = std::ranges::find_if(samples, [](double x) { return !std::isnan(x); });
    if (first == samples.end()) return;
    std::fill(samples.begin(), first, *first);
    for (std::size_t i = 1; i < samples.size(); ++i)
        if (std::isnan(samples[i])) samples[i] = samples[i - 1];
}

Record read_record(Source &source, const InputOptions &input, Missing missing) {
    Record record = is_sound(source) ? read_sound(source, input) : read_csv(source, input, missing);
    if (record.length() > INT_MAX) reject("{}: has more than {} samples", record.name, INT_MAX);
    return record;
}

std::size_t Record::place_of(std::size_t sample) const {
    const auto after = std::ranges::upper_bound(left_out, sample, {}, &LeftOut::sample);
    return sample + (after == left_out.begin() ? 0 : (after - 1)->count);
}

double rate_of(const Record &record) {
    if (record.rate <= 0 && !record.time_doubt.empty())
        reject("{}; give the sampling rate, such as --rate 1kHz", record.time_doubt);
    if (record.rate <= 0)
        reject("{}: has no column called time; name it with --time, or give the sampling rate, such as --rate 1kHz",
               record.name);
    return record.rate;
}

void remark_missing(const Record &record) {
    for (const std::string &line : record.remarks)
        if (!line.empty()) report(line);
    for (const Channel &channel : record.channels)
        remark_missing(record.name, channel, record.missing_rows, record.input.stand_in);
}

void remark_missing(const std::string &file, const Channel &channel, std::size_t missing_rows,
                    const std::string &stand_in) {
    if (channel.missing > missing_rows && channel.has_numbers())
        remark("{}: {}: {} of {} cells are missing; {}", file, channel.name, channel.missing - missing_rows,
               channel.samples.size() - missing_rows, stand_in);
}

Record read_signals(const InputOptions &input) {
    Source source(input.file);
    return read_signals(source, input);
}

Record read_signals(Source &source, const InputOptions &input) {
    Record record = read_record(source, input);
    for (const Channel &channel : record.channels)
        if (!channel.has_numbers() && !channel.text)
            remark("{}: {} holds no numbers and is left out", record.name, channel.name);
    std::erase_if(record.channels, [](const Channel &channel) { return !channel.has_numbers(); });
    if (record.channels.empty()) reject("{}: holds no numbers", record.name);
    rate_of(record);
    if (record.cut_hole > 0)
        reject(
            "{}: the hole before row {} is longer than {} samples, too long for a spectrum; --gaps split leaves it out",
            record.name, record.cut_hole + 1, kMostHeld);
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
