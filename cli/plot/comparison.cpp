#include "cli/plot/comparison.h"

#include "cli/app/diagnostics.h"
#include "cli/plot/draw.h"
#include "cli/plot/figure.h"

namespace cli {

void Comparison::add(std::size_t channel, double before, double after) {
    if (!plot_.wanted() || channel >= kMostPanels) return;
    if (before_.size() <= channel) {
        before_.resize(channel + 1, Envelope(plot_));
        after_.resize(channel + 1, Envelope(plot_));
    }
    before_[channel].add(before);
    after_[channel].add(after);
}

void Comparison::add(std::span<const double> before, std::span<const double> after, std::size_t channels) {
    if (!plot_.wanted()) return;
    for (std::size_t i = 0; i < after.size(); ++i) add(i % channels, before[i], after[i]);
}

void Comparison::draw(const std::string &title, const std::vector<std::string> &names, double rate) const {
    if (!plot_.wanted()) return;
    Figure figure{.title = title};
    for (std::size_t i = 0; i < before_.size(); ++i)
        figure.panels.push_back({.title = before_.size() == 1 ? title : "",
                                 .x_label = rate > 0 ? "time [s]" : "sample",
                                 .y_label = names[i],
                                 .curves = {before_[i].curve("before", rate), after_[i].curve("after", rate)}});
    remark_on_channels_left_out(names.size());
    cli::draw(figure, plot_);
}

void remark_on_channels_left_out(std::size_t channels) {
    if (channels > kMostPanels) remark("the picture shows the first {} of {} channels", kMostPanels, channels);
}

}  // namespace cli
