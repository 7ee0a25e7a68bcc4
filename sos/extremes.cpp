// The largest and the smallest gain of a filter, and where its gain passes a level.
#include <mensura/sos.h>

#include <algorithm>
#include <cmath>

#include "arguments.h"
#include "walk.h"

namespace mensura::sos {

namespace {

// The largest value of sign |H| from `first` to `last`, point by point.
class Highest {
  public:
    Highest(const Gain &gain, double sign, double first, double last)
        : gain_(gain), sign_(sign), first_(first), last_(last), best_(sign * gain(first)) {}

    double best() const { return sign_ * best_; }

    void visit(const Point &before, const Point &point, const Point &after) {
        const double a = sign_ * before.value, b = sign_ * point.value, c = sign_ * after.value;
        if (b > best_) best_ = b;
        if (b < a || b < c || point.at == 0 || point.at == 0.5) return;  // at both ends |H| turns where it is
        constexpr double kRounding = 1e-12;
        if (!(b + room_above(a, b, c) > best_ + kRounding * std::abs(best_))) return;
        const auto value = [this](double x) { return sign_ * gain_(x); };
        const Point top = maximum(value, std::max(before.at, first_), std::min(after.at, last_));
        if (top.value > best_) best_ = top.value;
    }

  private:
    const Gain &gain_;
    double sign_, first_, last_, best_;
};

double decibels(double gain) { return 20 * std::log10(gain); }

// Counts the frequencies at which the gain passes a threshold, and writes those that fit.
class Crossings {
  public:
    Crossings(const Gain &gain, double threshold, double rate, double *frequency, int capacity)
        : gain_(gain), threshold_(threshold), rate_(rate), frequency_(frequency), capacity_(capacity) {}

    int count() const { return count_; }

    // Between a point and the next one, or twice around a turn that just passes the threshold near the point.
    void visit(const Point &before, const Point &point, const Point &after) {
        if (is_above(point) != is_above(after)) {
            if (after.at <= 0.5) add(point, after);
            return;
        }
        if (is_above(before) != is_above(point) || point.at == 0 || point.at == 0.5) return;
        const double sign = is_above(point) ? -1 : 1;
        const double a = sign * before.value, b = sign * point.value, c = sign * after.value;
        if (b < a || b < c || !(b + room_above(a, b, c) >= sign * threshold_)) return;
        Point turn = maximum([this, sign](double x) { return sign * gain_(x); }, before.at, after.at);
        turn.value *= sign;
        if (is_above(turn) == is_above(point)) return;
        add(turn.at < point.at ? before : point, turn);
        add(turn, turn.at < point.at ? point : after);
    }

  private:
    bool is_above(const Point &p) const { return p.value >= threshold_; }

    // By bisection, down to neighbouring doubles.
    void add(const Point &from, const Point &to) {
        constexpr int kHalvings = 60;
        const bool above = is_above(from);
        double low = from.at, high = to.at;
        for (int i = 0; i < kHalvings; ++i) {
            const double middle = 0.5 * (low + high);
            ((gain_(middle) >= threshold_) == above ? low : high) = middle;
        }
        if (count_ < capacity_) frequency_[count_] = 0.5 * (low + high) * rate_;
        ++count_;
    }

    const Gain &gain_;
    double threshold_, rate_;
    double *frequency_;
    int capacity_, count_ = 0;
};

}  // namespace

}  // namespace mensura::sos

int mensura_sos_crossings(const double *sos, int sections, double rate, double level_db, double *frequency,
                          int capacity) {
    using namespace mensura::sos;
    if (const int code = check_sections(sos, sections)) return code;
    if (const int code = check_rate(rate)) return code;
    if (!std::isfinite(level_db)) return MENSURA_SOS_LEVEL;
    if (capacity < 0) return MENSURA_SOS_COUNT;
    if (capacity > 0 && !frequency) return MENSURA_SOS_NULL;
    const Gain gain(sos, sections);
    Crossings found(gain, std::pow(10.0, level_db / 20), rate, frequency, capacity);
    walk(gain, Landmarks(sos, sections), 0, 0.5,
         [&found](const Point &before, const Point &point, const Point &after) { found.visit(before, point, after); });
    return found.count();
}

int mensura_sos_extremes(const double *sos, int sections, double rate, double from, double to, double *lowest_db,
                         double *highest_db) {
    using namespace mensura::sos;
    if (const int code = check_sections(sos, sections)) return code;
    if (const int code = check_rate(rate)) return code;
    if (!(from >= 0 && to <= 0.5 * rate)) return MENSURA_SOS_FREQUENCY;
    if (from > to) return MENSURA_SOS_EDGES;
    const double first = from / rate, last = to / rate;
    const Gain gain(sos, sections);
    Highest highest(gain, 1, first, last), lowest(gain, -1, first, last);
    walk(gain, Landmarks(sos, sections), first, last, [&](const Point &before, const Point &point, const Point &after) {
        highest.visit(before, point, after);
        lowest.visit(before, point, after);
    });
    if (lowest_db) *lowest_db = decibels(lowest.best());
    if (highest_db) *highest_db = decibels(highest.best());
    return 0;
}
