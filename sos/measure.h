// What a cascade does to a signal, measured from its coefficients.  Frequencies and rates are in Hz, levels in dB.
#pragma once

#include <complex>
#include <vector>

#include "cascade.h"

namespace mensura::sos {

// Half the power, 10 log10(1/2) = -3.0103 dB, as a ratio of amplitudes.
inline constexpr double kHalfPower = 0.70710678118654752;

// 20 log10(magnitude).
double decibels(double magnitude);

// H at a frequency, H(exp(2 pi i f / rate)).
std::complex<double> response(Cascade cascade, double frequency, double rate);
double magnitude(Cascade cascade, double frequency, double rate);

// -d arg H / d omega, in samples.  A zero on the unit circle turns the phase by 180 degrees where it lies and delays by
// half a sample everywhere else; that half counts at its own frequency too.
double group_delay(Cascade cascade, double frequency, double rate);

// The largest magnitude of a pole; 1 or more is unstable.
double pole_radius(Cascade cascade);

// Frequencies from 0 to rate / 2 in ascending order: even steps, and around each pole and zero steps in proportion to
// the distance from it, so that no peak or notch falls between two of them.
std::vector<double> frequency_grid(Cascade cascade, double rate);

// Where, between two frequencies on whose sides of it they lie, the magnitude passes `threshold`; by bisection.
double crossing(Cascade cascade, double rate, double threshold, double from, double to);

// Every crossing between neighbours of the grid, in ascending order.
std::vector<double> crossings(Cascade cascade, double rate, double threshold, std::span<const double> grid);

// The extremes of the magnitude from one frequency to another, both included, at the points of the grid.
struct Extremes {
    double lowest, highest;
};
Extremes extremes(Cascade cascade, double rate, double from, double to, std::span<const double> grid);

}  // namespace mensura::sos
