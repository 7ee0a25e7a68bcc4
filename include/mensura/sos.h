/** @defgroup sos Filters as requested
 *
 * `mensura/sos.h`: IIR filters that have the level that was asked for at the frequency that was asked for; run in
 * blocks with their state, and measured.
 *
 * @code
 * mensura_sos_request request;
 * mensura_sos_default_request(&request, sizeof request);           // low-pass, Butterworth, 6 poles, -3.01 dB
 * request.rate = 360;
 * request.edge[0] = 40;                                            // at 40 Hz
 * double sos[MENSURA_SOS_MAX_SECTIONS * 6], state[MENSURA_SOS_MAX_SECTIONS * 4];
 * int sections = mensura_sos_design(&request, sos, MENSURA_SOS_MAX_SECTIONS);
 * if (sections < 0) puts(mensura_sos_message(sections));
 * mensura_sos_steady_state(sos, sections, x[0], state);            // as if x[0] had always been the input
 * mensura_sos_filter(sos, sections, state, x, 1, y, 1, n);         // again and again, block by block
 * @endcode
 *
 * **A filter** is an array of sections of six doubles, b0 b1 b2 1 a1 a2, as `sosfilt` of SciPy and MATLAB takes them.
 * It is the product of its sections, applied one after the other:
 *
 *     H_k(z) = (b0 + b1 z^-1 + b2 z^-2) / (1 + a1 z^-1 + a2 z^-2)
 *
 * A section whose fourth number is not exactly 1 is refused.  The other numbers are not checked where they are run.
 *
 * **Units.**  Frequencies, rates and widths are in Hz (or any one unit), levels in dB: 20 log10 |H|.  Delays are in
 * samples.
 *
 * **Errors.**  Every function of type int returns a negative code when it refuses its arguments, and then has written
 * nothing; mensura_sos_message says what the code means.  Nothing is clamped.  Pointers must not be null unless their
 * comment says so; arrays of n values may be null when n is 0.
 *
 * **Memory.**  Nothing allocates except mensura_sos_filtfilt, and that only when no work array is handed over.
 * On x86-64 mensura_sos_design and mensura_sos_order take up to 10 KB of stack, the others 5 KB, or 7 KB where the
 * processor has no AVX2, 13 KB without optimisation.
 *
 * **Threads.**  There is no global state: any calls may run at once, as long as no two of them share a state or an
 * output.
 * @{ */
#ifndef MENSURA_SOS_H
#define MENSURA_SOS_H

#include <mensura/export.h>
#include <mensura/iir.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

enum {
    MENSURA_SOS_MAX_SECTIONS = 20 /**< most sections that a design has */
};

/** What a negative result means. */
enum mensura_sos_code {
    MENSURA_SOS_NULL = -1,         /**< a pointer is null */
    MENSURA_SOS_SIZE = -2,         /**< the size of a record is not one that this library knows, or reserved is not 0 */
    MENSURA_SOS_TYPE = -3,         /**< pass_type is not an IIRPassType code, or all-pass where that has no meaning */
    MENSURA_SOS_FAMILY = -4,       /**< family is not a ProtoFamily code */
    MENSURA_SOS_POLES = -5,        /**< poles is below 1 or above the largest order of the family: 12 for Gaussian and
                                        Bessel, 15 for inverse Chebyshev and elliptic, 20 for the others */
    MENSURA_SOS_PASSES = -6,       /**< passes is neither 1 nor 2 */
    MENSURA_SOS_RATE = -7,         /**< the rate is not above 0, or not finite */
    MENSURA_SOS_FREQUENCY = -8,    /**< an edge does not lie above 0 and below half the rate, or a frequency to measure
                                        at not from 0 to half the rate */
    MENSURA_SOS_EDGES = -9,        /**< edges are equal or in the wrong order, or band is not a mensura_sos_band code */
    MENSURA_SOS_LEVEL = -10,       /**< a level, loss, attenuation or tolerance lies outside its range */
    MENSURA_SOS_RIPPLE = -11,      /**< the ripple lies outside its range */
    MENSURA_SOS_STOP_BAND = -12,   /**< the stop-band attenuation lies outside its range */
    MENSURA_SOS_GAMMA = -13,       /**< gamma lies outside -1 .. 1 */
    MENSURA_SOS_GAIN = -14,        /**< the gain lies outside -200 .. 200 dB */
    MENSURA_SOS_CAPACITY = -15,    /**< the array is too small for the result */
    MENSURA_SOS_COUNT = -16,       /**< a count is negative or too large, or there is no section or no channel */
    MENSURA_SOS_SECTION = -17,     /**< the fourth number of a section is not 1 */
    MENSURA_SOS_UNREACHABLE = -18, /**< no order of the family meets the requirement */
    MENSURA_SOS_PRECISION = -19, /**< doubles cannot hold this filter: edges too near 0, half the rate or each other */
    MENSURA_SOS_STEADY_STATE = -20, /**< a constant input leads to no steady state: a pole at z = 1 */
    MENSURA_SOS_ENDS = -21,     /**< ends is not a mensura_sos_ends code, or the extension is as long as the record */
    MENSURA_SOS_MEMORY = -22,   /**< there is no memory for the work array */
    MENSURA_SOS_UNSTABLE = -23, /**< a pole lies on or outside the unit circle */
    MENSURA_SOS_UNSETTLED = -24 /**< the step response has not settled within the samples allowed */
};

/** The sentence that belongs to a code, in English, without a full stop; never null, not to be freed. */
MENSURA_EXPORT const char *mensura_sos_message(int code);

/** @name Design
 * @{ */

/** How the edges of a band type are given. */
enum mensura_sos_band {
    MENSURA_SOS_TWO_EDGES = 0, /**< edge[0] and edge[1] are the lower and the upper edge */
    MENSURA_SOS_CENTRE = 1     /**< edge[0] is the centre, edge[1] the width: upper minus lower edge */
};

/** A filter as requested.
 * When it will run forwards and backwards (passes = 2), every figure in dB is that of both passes together. */
typedef struct mensura_sos_request {
    int size;         /**< sizeof(mensura_sos_request) */
    int pass_type;    /**< an IIRPassType code */
    int family;       /**< a ProtoFamily code */
    int poles;        /**< of the low-pass prototype: 1 .. the family's largest; band types have twice as many */
    int passes;       /**< 1, or 2 when the filter will run both ways (mensura_sos_filtfilt) */
    int band;         /**< band types: a mensura_sos_band code */
    double rate;      /**< sampling rate */
    double edge[2];   /**< low-pass, high-pass, all-pass: the edge; band types: see band */
    double level_db;  /**< level at the edges relative to the largest gain of the pass band: below 0, above -200 dB, and
                           for inverse Chebyshev and elliptic not below -stop_db */
    double ripple_db; /**< Chebyshev and elliptic: ripple of the pass band, 0.0001 .. 10 dB */
    double stop_db; /**< inverse Chebyshev and elliptic: attenuation of the stop band, 10 .. 200 dB, above the ripple */
    double gamma;   /**< Adjustable: shape, -1 .. 1 */
    double gain_db; /**< gain at DC (high-pass: at Nyquist, band-pass: at the centre) */
} mensura_sos_request;

/** Fills a request with the defaults: low-pass, Butterworth, 6 poles, 1 pass, two edges; level -3.0103 dB (half power),
 * ripple 0.1 dB, stop band 60 dB, gamma 0, gain 0 dB.  Rate and edges become 0 and must be set.
 * @param request  the record
 * @param size     sizeof(mensura_sos_request); stored in the record
 * @return 0 or a negative code */
MENSURA_EXPORT int mensura_sos_default_request(mensura_sos_request *request, int size);

/** Designs a filter that has the level requested at its edges.
 * Zeros, poles and gain of an analog low-pass are moved to the edge and to the pass type, and mapped to the z-plane by
 * the bilinear transform, s = (1 - z^-1) / (1 + z^-1) with edges at tan(pi f / rate).  With p poles in the prototype
 * there are (p + 1) / 2 sections, for band types p: each pair of poles has one, with the zeros nearest to it.
 *
 * Where a ripple of the pass band meets the level more than once, the edge is the outermost of these frequencies.  The
 * band types are geometrically symmetric in tan(pi f / rate); the centre f0 of the edges f1 and f2 has
 * tan^2(pi f0 / rate) = tan(pi f1 / rate) tan(pi f2 / rate).  An all-pass has the poles of the low-pass with that edge,
 * and their reflections as zeros.
 *
 * Sections of doubles hold low and narrow filters only so well: for poles w rad per sample away from z = 1 the sum
 * 1 + a1 + a2 is about w^2, and a multiple of 2^-53; near z = -1 likewise.  With levels of -3 dB or above at edges that
 * are w away from 0 or half the rate, and d the distance of two edges but at most w, |H| is within 1e-15 / (w d) of its
 * largest value for 6 Butterworth poles, within 2e-14 / (w d) for 12 poles of any family.  A single edge at -3 dB has
 * its level to 1e-6 dB from 1e-5 of half the rate on.  Sections that would shift the level at an edge by more than
 * 0.01 dB, or |H| at a resonance by more than 0.005 dB, are refused (MENSURA_SOS_PRECISION).
 * @param request   what is wanted
 * @param sos       room for `capacity` sections of 6 doubles; MENSURA_SOS_MAX_SECTIONS are always enough
 * @param capacity  sections that sos has room for
 * @return the number of sections, or a negative code */
MENSURA_EXPORT int mensura_sos_design(const mensura_sos_request *request, double *sos, int capacity);

/** What a filter has to achieve.  When it will run both ways, the figures in dB are those of both passes together. */
typedef struct mensura_sos_requirement {
    int size;              /**< sizeof(mensura_sos_requirement) */
    int pass_type;         /**< an IIRPassType code, all-pass excluded */
    int passes;            /**< 1 or 2 */
    int reserved;          /**< 0 */
    double rate;           /**< sampling rate */
    double pass_edge[2];   /**< of the pass band: one, for band types the lower and the upper one */
    double stop_edge[2];   /**< of the stop band: one, for band types the lower and the upper one */
    double loss_db;        /**< most that the pass band may lie below its largest gain: above 0 */
    double attenuation_db; /**< least that the stop band must lie below it: above the loss, at most 200 dB */
} mensura_sos_requirement;

/** The least order of a family that meets a requirement.
 * Each order is designed and measured: the pass edges get exactly the loss allowed, and an order counts when the worst
 * levels of its sections in both bands are within the requirement, to a thousandth of the loss, at most 0.001 dB.
 * Chebyshev and elliptic filters use the loss as their ripple, inverse Chebyshev and elliptic ones the attenuation as
 * their stop band, each as far as its range goes.
 * @param requirement  what is wanted
 * @param family       a ProtoFamily code, or -1 for the family that needs the fewest poles (of several, the one with
 *                     the smallest code)
 * @param gamma        for the Adjustable family
 * @param request      becomes the request whose design meets the requirement; may be null
 * @param size         sizeof(mensura_sos_request)
 * @return the order (request->poles), MENSURA_SOS_UNREACHABLE where no order will do, or another negative code */
MENSURA_EXPORT int mensura_sos_order(const mensura_sos_requirement *requirement, int family, double gamma,
                                     mensura_sos_request *request, int size);

/** @} */

/** @name Run
 * The state of a filter is 4 doubles a section: its input one and two samples ago, its output one and two samples ago.
 * All zero is rest.  A stride is the distance from one sample to the next, in doubles; it may be negative.  Outputs are
 * the inputs (the same pointer and strides), or do not overlap them.
 * @{ */

/** Filters n samples and keeps the state: a record in pieces gives the bits of the whole.
 * Each sample gets the bits that IIRFilter gives with the same sections (a0 = 1) and registers:
 *
 *     y = b0 u + b1 u' + b2 u'' - a1 y' - a2 y''      from left to right, ' and '' for one and two samples ago
 *
 * @param sos       the sections
 * @param sections  their number, 1 or more
 * @param state     4 doubles a section
 * @param x         n samples
 * @param x_stride  doubles from a sample to the next one
 * @param y         room for n samples
 * @param y_stride  doubles from a sample to the next one
 * @param n         number of samples, 0 or more
 * @return 0 or a negative code */
MENSURA_EXPORT int mensura_sos_filter(const double *sos, int sections, double *state, const double *x,
                                      ptrdiff_t x_stride, double *y, ptrdiff_t y_stride, ptrdiff_t n);

/** Filters n samples of each of several channels, side by side; each gets the bits of mensura_sos_filter.
 * Interleaved channels have a stride of `channels` and a distance of 1; planar ones a stride of 1 and a distance of n.
 * @param sos         the sections, the same for all channels
 * @param sections    their number, 1 or more
 * @param state       4 doubles a section for channel 0, then for channel 1, and so on
 * @param channels    number of channels, 1 or more
 * @param x           n samples a channel
 * @param x_stride    doubles from a sample of a channel to its next one
 * @param x_distance  doubles from a channel to the next one
 * @param y           room for n samples a channel
 * @param y_stride    doubles from a sample of a channel to its next one
 * @param y_distance  doubles from a channel to the next one
 * @param n           number of samples, 0 or more
 * @return 0 or a negative code */
MENSURA_EXPORT int mensura_sos_filter_channels(const double *sos, int sections, double *state, int channels,
                                               const double *x, ptrdiff_t x_stride, ptrdiff_t x_distance, double *y,
                                               ptrdiff_t y_stride, ptrdiff_t y_distance, ptrdiff_t n);

/** The state that a filter has reached when its input has always been x: it starts without a transient.
 * Every section is taken at its own gain at DC, (b0 + b1 + b2) / (1 + a1 + a2), so all pass types start settled.
 * @param sos       the sections
 * @param sections  their number, 1 or more
 * @param x         the input
 * @param state     room for 4 doubles a section
 * @return 0, or a negative code: MENSURA_SOS_STEADY_STATE for a pole at z = 1 */
MENSURA_EXPORT int mensura_sos_steady_state(const double *sos, int sections, double x, double *state);

/** How a record is continued at its ends before it is filtered both ways. */
enum mensura_sos_ends {
    MENSURA_SOS_ENDS_NONE = 0,    /**< not at all: both passes start in the steady state of their first sample */
    MENSURA_SOS_ENDS_ODD = 1,     /**< point symmetric: 2 x[0] - x[i] */
    MENSURA_SOS_ENDS_EVEN = 2,    /**< mirrored: x[i] */
    MENSURA_SOS_ENDS_CONSTANT = 3 /**< its first and last sample repeated */
};

/** The samples by which mensura_sos_filtfilt extends either end by default, as SciPy's sosfiltfilt does:
 * 3 (2 s + 1 - min(number of sections with b2 = 0, number of sections with a2 = 0)) for s sections.
 * @param sos       the sections
 * @param sections  their number, 1 or more
 * @return the number of samples, or a negative code */
MENSURA_EXPORT int mensura_sos_extension(const double *sos, int sections);

/** Filters a record forwards and backwards: no phase shift (zero phase), and every dB counts twice.
 * The record is extended at both ends; each pass starts in the steady state of the first sample it sees; the extensions
 * are dropped.
 * @param sos        the sections
 * @param sections   their number, 1 or more
 * @param ends       a mensura_sos_ends code
 * @param extension  samples of the extension, less than n; -1: mensura_sos_extension; not used where ends is
 *                   MENSURA_SOS_ENDS_NONE
 * @param x          n samples
 * @param x_stride   doubles from a sample to the next one
 * @param y          room for n samples
 * @param y_stride   doubles from a sample to the next one
 * @param n          number of samples, 0 or more
 * @param work       room for 4 sections + 2 extension doubles, or null: allocated
 * @return 0, or a negative code: MENSURA_SOS_ENDS where the extension is not shorter than the record;
 *         MENSURA_SOS_STEADY_STATE for a pole at z = 1; MENSURA_SOS_MEMORY */
MENSURA_EXPORT int mensura_sos_filtfilt(const double *sos, int sections, int ends, ptrdiff_t extension, const double *x,
                                        ptrdiff_t x_stride, double *y, ptrdiff_t y_stride, ptrdiff_t n, double *work);

/** @} */

/** @name Measure
 * @{ */

/** The frequency response H at n frequencies.
 * @param sos        the sections
 * @param sections   their number, 1 or more
 * @param rate       sampling rate
 * @param frequency  n frequencies, 0 .. rate / 2
 * @param re         room for n real parts
 * @param im         room for n imaginary parts
 * @param n          number of frequencies, 0 or more
 * @return 0 or a negative code */
MENSURA_EXPORT int mensura_sos_response(const double *sos, int sections, double rate, const double *frequency,
                                        double *re, double *im, ptrdiff_t n);

/** The group delay, -d arg H / d omega, in samples at n frequencies.
 * A zero within 1e-9 of the unit circle counts as on it: it delays by half a sample at every frequency, its own
 * included.  NaN for a section whose output is always 0.
 * @param sos        the sections
 * @param sections   their number, 1 or more
 * @param rate       sampling rate
 * @param frequency  n frequencies, 0 .. rate / 2
 * @param delay      room for n delays
 * @param n          number of frequencies, 0 or more
 * @return 0 or a negative code */
MENSURA_EXPORT int mensura_sos_group_delay(const double *sos, int sections, double rate, const double *frequency,
                                           double *delay, ptrdiff_t n);

/** The frequencies at which the gain passes a level, in ascending order.
 * @param sos        the sections
 * @param sections   their number, 1 or more
 * @param rate       sampling rate
 * @param level_db   20 log10 |H|, absolute: -3.0103 for half power of a filter of unit gain
 * @param frequency  room for `capacity` frequencies
 * @param capacity   0 or more; those that fit are written
 * @return the number of crossings, which may exceed capacity, or a negative code */
MENSURA_EXPORT int mensura_sos_crossings(const double *sos, int sections, double rate, double level_db,
                                         double *frequency, int capacity);

/** The smallest and the largest gain from one frequency to another: the worst level of a pass band or a stop band.
 * Every turn of the gain within the band is found, however narrow.
 * @param sos         the sections
 * @param sections    their number, 1 or more
 * @param rate        sampling rate
 * @param from        lower end of the band, 0 or more
 * @param to          upper end, not below `from`, at most rate / 2
 * @param lowest_db   the smallest gain in dB, far down, or minus infinity, at a zero of H; may be null
 * @param highest_db  the largest gain in dB; may be null
 * @return 0 or a negative code */
MENSURA_EXPORT int mensura_sos_extremes(const double *sos, int sections, double rate, double from, double to,
                                        double *lowest_db, double *highest_db);

/** The largest magnitude of a pole: 1 or more is unstable.  NaN if a coefficient of the denominators is not finite.
 * @param sos       the sections
 * @param sections  their number, 1 or more
 * @param radius    the result
 * @return 0 or a negative code */
MENSURA_EXPORT int mensura_sos_pole_radius(const double *sos, int sections, double *radius);

/** The response to 1, 1, 1, ... from rest, n samples of it.
 * @param sos       the sections
 * @param sections  their number, 1 or more
 * @param y         room for n samples
 * @param n         number of samples, 0 or more
 * @return 0 or a negative code */
MENSURA_EXPORT int mensura_sos_step_response(const double *sos, int sections, double *y, ptrdiff_t n);

/** The response to 1, 0, 0, ... from rest, n samples of it.
 * @param sos       the sections
 * @param sections  their number, 1 or more
 * @param y         room for n samples
 * @param n         number of samples, 0 or more
 * @return 0 or a negative code */
MENSURA_EXPORT int mensura_sos_impulse_response(const double *sos, int sections, double *y, ptrdiff_t n);

/** What the step response does before it comes to rest.
 * Its final value is H at DC.  The overshoot is the most that it goes beyond that value, seen from 0; for a filter
 * whose final value is 0 (high-pass, band-pass), or less than a tenth of its largest value, the smaller of its swings
 * above and below the final value.  It has settled from the first sample on after which it stays within `tolerance` of
 * the final value.  The overshoot and the tolerance are in units of the step.
 *
 * The response runs until a bound on all that is still to come, from the registers and the poles, is within the
 * tolerance and leaves the overshoot as it is (to 1e-6).
 * @param sos        the sections
 * @param sections   their number, 1 .. 64
 * @param tolerance  such as 0.02, above 0 (MENSURA_SOS_LEVEL)
 * @param most       samples to run at most, 1 or more; the time is proportional to those that run
 * @param overshoot  0 when there is none; may be null
 * @param settling   samples; may be null
 * @return 0, or a negative code: MENSURA_SOS_UNSTABLE; MENSURA_SOS_UNSETTLED, also where it takes more than `most`
 *         samples to be sure */
MENSURA_EXPORT int mensura_sos_step_figures(const double *sos, int sections, double tolerance, ptrdiff_t most,
                                            double *overshoot, ptrdiff_t *settling);

/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
