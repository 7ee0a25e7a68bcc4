#include "cli/plot/comparison.h"

#include <algorithm>

#include "cli/app/diagnostics.h"
#include "cli/plot/draw.h"
#include "cli/plot/figure.h"
#include "cli/times/gap_report.h"

namespace cli {

void Comparison::add(std::size_t place, std::size_t channel, double before, double after) {
    if (!plot_.wanted() || channel >= kMostPanels) return;
    if (before_.size() <= channel) {
        before_.resize(channel + 1, Envelope(plot_));
        after_.resize(channel + 1, Envelope(plot_));
    }
    before_[channel].add(place, before);
    after_[channel].add(place, after);
}

void Comparison::add(std::span<const double> before, std::span<const double> after, std::size_t channels) {
    if (!plot_.wanted()) return;
    for (std::size_t i = 0; i < after.size(); ++i) add(frames_ + i / channels, i % channels, before[i], after[i]);
    frames_ += after.size() / channels;
}

Panel Comparison::panel(const std::string &name, double rate, std::vector<Curve> curves) const {
    return {.x_label = rate > 0 ? "time [s]" : "sample", .y_label = name, .curves = std::move(curves)};
}

void Comparison::draw(const std::string &title, const std::vector<std::string> &names, double rate,
                      const std::vector<std::string> &new_names) const {
    if (!plot_.wanted()) return;
    Figure figure{.title = title};
    const std::size_t channels = new_names.empty() ? kMostPanels : kMostPanels / 2;
    for (std::size_t i = 0; i < std::min(channels, before_.size()); ++i) {
        const Curve before = before_[i].curve(names_.before, rate, short_hole(rate));
        const Curve after = after_[i].curve(names_.after, rate, short_hole(rate));
        if (new_names.empty()) {
            figure.panels.push_back(panel(names[i], rate, {before, after}));
        } else {
            figure.panels.push_back(panel(names[i], rate, {before}));
            figure.panels.push_back(panel(new_names[i], rate, {after}));
        }
    }
    if (figure.panels.size() == 1) figure.panels[0].title = title;
    remark_on_channels_left_out(names.size(), channels);
    cli::draw(figure, plot_);
}

void remark_on_channels_left_out(std::size_t channels, std::size_t shown) {
    if (channels > shown) remark("the picture shows the first {} of {} channels", shown, channels);
}

}  // namespace cli
