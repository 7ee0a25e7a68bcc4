// Measurements of cascades and the table of the families, with plain arguments, for the Python programs that make pages.
// A cascade is `count` rows b0 b1 b2 1 a1 a2; frequencies and rates are in Hz, magnitudes are ratios.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "../../iir/proto/limits.h"
#include "../../sos/measure.h"

namespace {

using mensura::sos::Cascade;
using mensura::sos::Section;

// The rows as sections.
class Rows {
  public:
    Rows(const double *rows, int count) : sections_(static_cast<std::size_t>(count)) {
        std::memcpy(sections_.data(), rows, sections_.size() * sizeof(Section));
    }
    operator Cascade() const { return sections_; }

  private:
    static_assert(sizeof(Section) == 6 * sizeof(double));
    std::vector<Section> sections_;
};

// Writes as many values as there is room for; returns how many there are.
int hand_over(const std::vector<double> &values, double *out, int capacity) {
    std::copy_n(values.begin(), std::min(values.size(), static_cast<std::size_t>(capacity)), out);
    return static_cast<int>(values.size());
}

}  // namespace

extern "C" {

// The sections of a record that run.  rows: room for 6 MAX_IIR_SECTIONS values.  Returns their number.
int measure_sections(const IIRCoeffs *record, double *rows) {
    const mensura::sos::RecordSections sections(*record);
    const Cascade cascade = sections.cascade();
    std::memcpy(rows, cascade.data(), cascade.size_bytes());
    return static_cast<int>(cascade.size());
}

void measure_magnitudes(const double *rows, int count, double rate, const double *frequencies, int n, double *out) {
    const Rows cascade(rows, count);
    for (int i = 0; i < n; ++i) out[i] = mensura::sos::magnitude(cascade, frequencies[i], rate);
}

double measure_group_delay(const double *rows, int count, double rate, double frequency) {
    return mensura::sos::group_delay(Rows(rows, count), frequency, rate);
}

double measure_pole_radius(const double *rows, int count) { return mensura::sos::pole_radius(Rows(rows, count)); }

int measure_grid(const double *rows, int count, double rate, double *out, int capacity) {
    return hand_over(mensura::sos::frequency_grid(Rows(rows, count), rate), out, capacity);
}

void measure_extremes(const double *rows, int count, double rate, double from, double to, double *lowest,
                      double *highest) {
    const Rows cascade(rows, count);
    const std::vector<double> grid = mensura::sos::frequency_grid(cascade, rate);
    const mensura::sos::Extremes found = mensura::sos::extremes(cascade, rate, from, to, grid);
    *lowest = found.lowest;
    *highest = found.highest;
}

void measure_band_around(const double *rows, int count, double rate, double threshold, double frequency, double *from,
                         double *to) {
    const Rows cascade(rows, count);
    const std::vector<double> grid = mensura::sos::frequency_grid(cascade, rate);
    const mensura::sos::Band band = mensura::sos::band_around(cascade, rate, threshold, frequency, grid);
    *from = band.from;
    *to = band.to;
}

// Name and largest order of a family; null for a code that is none.
const char *measure_family(int code, int *max_poles) {
    const mensura::iir::Family *const family = mensura::iir::find_family(code);
    if (family == nullptr) return nullptr;
    *max_poles = family->max_poles;
    return family->name;
}
}
