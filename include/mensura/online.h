/** @defgroup online Sensor streams
 *
 * `mensura/online.h`: filters for sensor streams, one sample in, one out, and the derivative of a whole record.
 *
 * @code
 * MovingAverageOnline average;
 * init_move_average_filter_online(&average, 16);
 * y = move_average_filter_online(&average, x);     // once per sample
 * @endcode
 *
 * A name ending in `_online` runs one channel.  One ending in `_onlines` runs an array of channels, a sample of each
 * per call: out[i] is what the `_online` form gives for record i and x[i].  x and out have count numbers each, and out
 * may be x.  A count below 1 does nothing.  Results have the unit of the samples, derivatives that unit over the unit
 * of the sampling interval.  The spellings "amlitude" and "filer" belong to the names.
 *
 * **Memory.**  Nothing here allocates.  A MovingAverageOnline takes 16 KB, a MovingAverageBank 160 KB: mind small
 * stacks.
 *
 * **Threads.**  Separate records may run in separate threads at once; one record belongs to one thread at a time.
 *
 * **Errors.**  None are reported; NaN and infinity flow through the arithmetic.
 * @{ */
#ifndef MENSURA_ONLINE_H
#define MENSURA_ONLINE_H

#include <mensura/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Capacities of the records. */
enum {
    MOVING_AVERAGE_CAPACITY = 2000, /**< most samples of a moving average */
    MOVING_AVERAGE_CHANNELS = 10    /**< most channels of a MovingAverageBank */
};

/** @name Records
 * @{ */

/** The derivative of a stream. */
typedef struct CentralDiffOnline {
    double Step;  /**< sampling interval */
    double Prev1; /**< the last sample */
    double Prev2; /**< the sample before it */
    int Count;    /**< samples seen, up to 2 */
} CentralDiffOnline;

/** A spike filter. */
typedef struct AmplitudeLimitOnline {
    double Limit; /**< largest jump that is accepted, in the unit of the samples */
    double Last;  /**< last sample that was accepted */
    int Count;    /**< samples seen, up to 6; then 6 plus the samples rejected in a row */
} AmplitudeLimitOnline;

/** A moving average. */
typedef struct MovingAverageOnline {
    int Length;                             /**< of the window, 1 to MOVING_AVERAGE_CAPACITY */
    double Buffer[MOVING_AVERAGE_CAPACITY]; /**< the samples of the window */
    int Pos;                                /**< where the next sample goes */
    int Full;                               /**< 1 once the window has been filled */
} MovingAverageOnline;

/** One moving average per channel. */
typedef struct MovingAverageBank {
    MovingAverageOnline Filters[MOVING_AVERAGE_CHANNELS]; /**< one a channel */
    int Count;                                            /**< channels in use */
} MovingAverageBank;

/** A spike filter and the moving average after it. */
typedef struct LimitAverageOnline {
    AmplitudeLimitOnline Limiter; /**< runs first */
    MovingAverageOnline Average;  /**< averages what the limiter lets through */
} LimitAverageOnline;

/** @} */

/** @name Derivative
 * @{ */

/** The derivative of a record by central differences.
 * Inside the record:
 *
 *     dx[i] = (x[i+1] - x[i-1]) / (2 h)
 *
 * At the ends the missing sample continues the straight line of the last two.
 * @param x   n samples, read only
 * @param dx  room for n values, in the unit of x over that of h; must not overlap x
 * @param n   number of samples; n < 2 writes nothing
 * @param h   sampling interval, not checked */
MENSURA_EXPORT void central_difference(const double *x, double *dx, int n, double h);

/** Starts the derivative of a stream; h is the sampling interval, not checked. */
MENSURA_EXPORT void init_central_difference_online(CentralDiffOnline *s, double h);

/** The derivative of a stream at the sample before x, so one sample late; the first two calls give 0.
 * The formula is that of central_difference, in the unit of x over that of the interval. */
MENSURA_EXPORT double central_difference_online(CentralDiffOnline *s, double x);

/** Starts count derivatives: init_central_difference_online for each of s[0] to s[count-1]. */
MENSURA_EXPORT void init_central_difference_onlines(CentralDiffOnline *s, int count, double h);

/** One sample of each of count streams: out[i] = central_difference_online(&s[i], x[i]). */
MENSURA_EXPORT void central_difference_onlines(CentralDiffOnline *s, const double *x, double *out, int count);

/** @} */

/** @name Spikes
 * @{ */

/** Starts a spike filter that accepts jumps of up to limit, in the unit of the samples.
 * The sample after a spike of k samples is compared with the one before the spike: choose limit above the largest real
 * change over k + 1 sampling intervals. */
MENSURA_EXPORT void init_amlitude_limit_filer_online(AmplitudeLimitOnline *s, double limit);

/** Rejects spikes: a sample that differs by more than the limit from the last accepted one is replaced by that one.
 * The first six samples pass unchecked.  A jump that lasts is accepted in the end: 18 samples in a row are rejected,
 * the 19th is accepted.  NaN is accepted, and so is the sample that follows it. */
MENSURA_EXPORT double amlitude_limit_filer_online(AmplitudeLimitOnline *s, double x);

/** Starts count spike filters: init_amlitude_limit_filer_online for each of s[0] to s[count-1]. */
MENSURA_EXPORT void init_amlitude_limit_filer_onlines(AmplitudeLimitOnline *s, int count, double limit);

/** One sample of each of count streams: out[i] = amlitude_limit_filer_online(&s[i], x[i]). */
MENSURA_EXPORT void amlitude_limit_filer_onlines(AmplitudeLimitOnline *s, const double *x, double *out, int count);

/** @} */

/** @name Moving average
 * @{ */

/** Starts a moving average over length samples.
 * A length outside 1 .. 2000 writes past the record: it is the caller's duty to keep within it. */
MENSURA_EXPORT void init_move_average_filter_online(MovingAverageOnline *s, int length);

/** The mean of the last length samples, or of all samples so far until there are that many.
 * The window is summed anew in every call, in the order in which it lies in memory, so that no rounding error stays
 * behind: the time of a call grows with the length. */
MENSURA_EXPORT double move_average_filter_online(MovingAverageOnline *s, double x);

/** Starts a bank of count moving averages over length samples each, and stores count in it.
 * A count above 10 writes past the bank, a length outside 1 .. 2000 past its records: it is the caller's duty to keep
 * within them. */
MENSURA_EXPORT void init_move_average_filter_onlines(MovingAverageBank *b, int length, int count);

/** One sample of each channel of a bank: out[i] = move_average_filter_online(&b->Filters[i], x[i]).
 * x and out have b->Count numbers each; returns b->Count.  A bank takes a fraction of the time of its channels one by
 * one. */
MENSURA_EXPORT int move_average_filter_onlines(MovingAverageBank *b, const double *x, double *out);

/** @} */

/** @name Spikes, then moving average
 * @{ */

/** Starts a spike filter and the moving average behind it.
 * @param s       the record
 * @param length  of the average, 1 .. 2000; it is the caller's duty to keep within that
 * @param limit   as for init_amlitude_limit_filer_online */
MENSURA_EXPORT void init_amlitude_limit_move_average_filter_online(LimitAverageOnline *s, int length, double limit);

/** The moving average of what the spike filter lets through. */
MENSURA_EXPORT double amlitude_limit_move_average_filter_online(LimitAverageOnline *s, double x);

/** Starts count such filters: init_amlitude_limit_move_average_filter_online for each of s[0] to s[count-1]. */
MENSURA_EXPORT void init_amlitude_limit_move_average_filter_onlines(LimitAverageOnline *s, int length, int count,
                                                                    double limit);

/** One sample of each of count streams: out[i] = amlitude_limit_move_average_filter_online(&s[i], x[i]). */
MENSURA_EXPORT void amlitude_limit_move_average_filter_onlines(LimitAverageOnline *s, const double *x, double *out,
                                                               int count);

/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
