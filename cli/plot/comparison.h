// Pictures of channels before and after a command has changed them.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "cli/plot/envelope.h"
#include "cli/plot/options.h"

namespace cli {

// A panel for each of the first channels; collects nothing where no picture is wanted.
class Comparison {
  public:
    explicit Comparison(const PlotOptions &plot) : plot_(plot) {}
    void add(std::size_t channel, double before, double after);
    // Frames, a sample of each channel.
    void add(std::span<const double> before, std::span<const double> after, std::size_t channels);
    void draw(const std::string &title, const std::vector<std::string> &names, double rate) const;

  private:
    const PlotOptions &plot_;
    std::vector<Envelope> before_, after_;
};

// Says on stderr when there are more channels than a picture shows.
void remark_on_channels_left_out(std::size_t channels);

}  // namespace cli
