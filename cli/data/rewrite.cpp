#include "cli/data/rewrite.h"

#include <algorithm>
#include <cmath>

#include "cli/app/diagnostics.h"
#include "cli/data/table.h"

namespace cli {

namespace {

// Runs the steps over one row; before the first number of a channel nothing goes in.
class Channels {
  public:
    Channels(const MakeStep &make, Comparison &comparison) : make_(make), comparison_(comparison) {}

    const std::vector<double> &run(const std::vector<double> &row) {
        while (steps_.size() < row.size()) {
            steps_.push_back(make_());
            held_.push_back(kMissing);
        }
        result_.resize(row.size());
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (!std::isnan(row[i])) held_[i] = row[i];
            result_[i] = std::isnan(held_[i]) ? kMissing : steps_[i](held_[i]);
            comparison_.add(i, row[i], result_[i]);
        }
        return result_;
    }

  private:
    const MakeStep &make_;
    Comparison &comparison_;
    std::vector<Step> steps_;
    std::vector<double> held_, result_;
};

std::vector<std::string> names_of(const TableReader &table) {
    std::vector<std::string> names;
    for (const Column &column : table.columns()) names.push_back(column.name);
    return names;
}

}  // namespace

void add_columns(const Command &app, std::vector<std::string> &columns) {
    app.add_option("--column", columns, "column by name or number from 1; repeatable; default every column of numbers")
        .type_name("NAME|N")
        .one_at_a_time();
}

void add_output(const Command &app, std::string &output) {
    app.add_option("-o,--output", output, "write to this file instead of standard output").type_name("FILE");
}

void add_files(const Command &app, Files &files) {
    app.add_option("FILE", files.input, "input; - or none is standard input");
    add_columns(app, files.columns);
    add_output(app, files.output);
    add_plot_options(app, files.plot);
}

void Comparison::add(std::size_t channel, double before, double after) {
    if (!plot_.wanted() || channel >= kMostPanels) return;
    if (before_.size() <= channel) {
        before_.resize(channel + 1);
        after_.resize(channel + 1);
    }
    before_[channel].add(before);
    after_[channel].add(after);
}

void Comparison::draw(const std::string &title, const std::vector<std::string> &names, double rate) const {
    if (!plot_.wanted()) return;
    Figure figure{.title = title};
    for (std::size_t i = 0; i < before_.size(); ++i)
        figure.panels.push_back({.title = before_.size() == 1 ? title : "",
                                 .x_label = rate > 0 ? "time [s]" : "sample",
                                 .y_label = names[i],
                                 .curves = {before_[i].curve("before", rate), after_[i].curve("after", rate)}});
    if (names.size() > before_.size())
        remark("the picture shows the first {} of {} channels", kMostPanels, names.size());
    cli::draw(figure, plot_);
}

void stream_table(Source &source, const Files &files, const MakeStep &make, const std::string &title, double rate) {
    TableReader table(source, files.columns);
    Output out(data_file(files.plot, files.output));
    Comparison comparison(files.plot);
    Channels channels(make, comparison);
    for (;;) {
        if (out.full() || (table.rows() > 0 && !table.ready())) out.flush();
        if (!table.next()) break;
        if (table.kind() == LineKind::Data)
            table.write_row(out, channels.run(table.values()));
        else
            table.write_line(out);
    }
    out.commit();
    comparison.draw(title, names_of(table), rate);
}

void stream_wav(WavReader &wav, const Files &files, const MakeStep &make, const std::string &title) {
    Output out(data_file(files.plot, files.output));
    WavWriter result(out, wav);
    Comparison comparison(files.plot);
    Channels channels(make, comparison);
    std::vector<double> frames(kWavFrames * wav.channels()), row(wav.channels());
    while (const std::size_t count = wav.read(frames)) {
        for (std::size_t i = 0; i < count; i += row.size()) {
            std::copy_n(frames.data() + i, row.size(), row.data());
            std::ranges::copy(channels.run(row), frames.data() + i);
        }
        result.write({frames.data(), count});
    }
    result.finish();
    std::vector<std::string> names;
    for (std::size_t i = 0; i < wav.channels(); ++i) names.push_back(wav.channel_name(i));
    out.commit();
    comparison.draw(title, names, wav.rate());
}

void rewrite_record(Record &record, const Files &files, const Change &change, const std::string &title) {
    remark_missing(record);
    Comparison comparison(files.plot);
    std::vector<std::string> names;
    for (std::size_t i = 0; i < record.channels.size(); ++i) {
        Channel &channel = record.channels[i];
        const std::vector<double> before = files.plot.wanted() ? channel.samples : std::vector<double>();
        if (channel.has_numbers()) change(channel);
        for (std::size_t k = 0; k < before.size(); ++k) comparison.add(i, before[k], channel.samples[k]);
        names.push_back(channel.name);
    }
    Output out(data_file(files.plot, files.output));
    write_record(record, out);
    out.commit();
    comparison.draw(title, names, record.rate);
}

void expect_table(Source &source) {
    if (is_wav(source)) reject("{}: is a WAV; this command reads tables (CSV)", source.name());
}

}  // namespace cli
