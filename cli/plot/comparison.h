// Pictures of channels before and after a command has changed them.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "cli/plot/envelope.h"
#include "cli/plot/options.h"

namespace cli {

struct CurveNames {
    std::string before, after;
};

// A panel for each of the first channels; collects nothing where no picture is wanted.
class Comparison {
  public:
    explicit Comparison(const PlotOptions &plot, CurveNames names = {"before", "after"})
        : plot_(plot), names_(std::move(names)) {}
    // `place`: in samples from the first.
    void add(std::size_t place, std::size_t channel, double before, double after);
    // The next frames, a sample of each channel.
    void add(std::span<const double> before, std::span<const double> after, std::size_t channels);
    // With `new_names` the channels have other units than before: a panel for each, below that of what it was before.
    void draw(const std::string &title, const std::vector<std::string> &names, double rate,
              const std::vector<std::string> &new_names = {}) const;

  private:
    Panel panel(const std::string &name, double rate, std::vector<Curve> curves) const;

    const PlotOptions &plot_;
    CurveNames names_;
    std::vector<Envelope> before_, after_;
    std::size_t frames_ = 0;
};

// Says on stderr when there are more channels than a picture shows.
void remark_on_channels_left_out(std::size_t channels, std::size_t shown = kMostPanels);

}  // namespace cli
