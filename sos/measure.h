// What a cascade does to a signal, measured from its coefficients.  Frequencies and rates are in Hz, levels in dB.
#pragma once

#include <complex>
#include <span>
#include <vector>

#include "cascade.h"

namespace mensura::sos {

// Half the power, 10 log10(1/2) = -3.0103 dB, as a ratio of amplitudes.
inline constexpr double kHalfPower = 0.70710678118654752;

// 20 log10(magnitude).
double decibels(double magnitude);

// H at a frequency, H(exp(2 pi i f / rate)), and its modulus.
std::complex<double> response(Cascade cascade, double frequency, double rate);
double magnitude(Cascade cascade, double frequency, double rate);

// -d arg H / d omega, in samples.  A zero within 1e-9 of the unit circle counts as on it: it delays by half a sample at
// every frequency, its own included, where the phase jumps by 180 degrees.  NaN for a section whose output is always 0.
double group_delay(Cascade cascade, double frequency, double rate);

// The largest magnitude of a pole; 1 or more is unstable.  NaN if a coefficient of the denominators is not finite.
double pole_radius(Cascade cascade);

// Frequencies from 0 to rate / 2 in ascending order: even steps, and around each pole and zero smaller ones in
// proportion to the distance from it, so that no peak or notch falls between two of them.
std::vector<double> frequency_grid(Cascade cascade, double rate);

// The frequency between `from` and `to` at which the magnitude passes `threshold`, by bisection.  It is above the
// threshold at one of the two and below at the other.
double crossing(Cascade cascade, double rate, double threshold, double from, double to);

// Every crossing between neighbours of the grid, in ascending order.
std::vector<double> crossings(Cascade cascade, double rate, double threshold, std::span<const double> grid);

// The crossing nearest to a frequency, such as the half-power point of a low-pass; NaN if there is none.
double nearest_crossing(Cascade cascade, double rate, double threshold, double frequency, std::span<const double> grid);

// The band around a frequency in which the magnitude stays on the side of the threshold where it is at that frequency:
// the pass band of a band-pass, the stop band of a notch.  Without a crossing on a side it reaches to 0 or rate / 2.
struct Band {
    double from, to;
};
Band band_around(Cascade cascade, double rate, double threshold, double frequency, std::span<const double> grid);

// The extremes of the magnitude from one frequency to another, both included.  They are searched for among the points
// of the grid, and then by golden section between the best point and its neighbours.
struct Extremes {
    double lowest, highest;
};
Extremes extremes(Cascade cascade, double rate, double from, double to, std::span<const double> grid);

}  // namespace mensura::sos
