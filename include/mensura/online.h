/** @file
 * @defgroup online Sensor streams
 *
 * Filters for sensor streams, one sample in, one out, and the derivative of a whole record.
 *
 *     MovingAverageOnline average;
 *     init_move_average_filter_online(&average, 16);
 *     y = move_average_filter_online(&average, x);       once per sample
 *
 * A name ending in _online runs one channel, one ending in _onlines an array of channels, a sample of each per call:
 * out[i] is what the _online form gives for record i and x[i].  x and out have count numbers each, and out may be x.  A
 * count below 1 does nothing.  The spellings "amlitude" and "filer" belong to the names.
 *
 * Memory.  Nothing here allocates.  A MovingAverageOnline takes 16 KB, a MovingAverageBank 160 KB: mind small stacks.
 *
 * Threads.  Separate records may run in separate threads at once; one record belongs to one thread at a time.
 *
 * Errors.  None are reported; NaN and infinity flow through the arithmetic. */
#ifndef MENSURA_ONLINE_H
#define MENSURA_ONLINE_H

#include <mensura/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Most samples of a moving average, and most channels of a bank. */
enum { MOVING_AVERAGE_CAPACITY = 2000, MOVING_AVERAGE_CHANNELS = 10 };

/* ---- Records ---------------------------------------------------------------------------------------------------- */

/** The derivative of a stream. */
typedef struct CentralDiffOnline {
    double Step;  /**< sampling interval */
    double Prev1; /**< the last sample */
    double Prev2; /**< the one before it */
    int Count;    /**< samples seen, up to 2 */
} CentralDiffOnline;

/** A spike filter. */
typedef struct AmplitudeLimitOnline {
    double Limit; /**< largest jump that is accepted */
    double Last;  /**< last sample that was accepted */
    int Count;    /**< samples seen, up to 6; above: samples rejected in a row, plus 6 */
} AmplitudeLimitOnline;

/** A moving average. */
typedef struct MovingAverageOnline {
    int Length; /**< of the window, 1 .. MOVING_AVERAGE_CAPACITY */
    double Buffer[MOVING_AVERAGE_CAPACITY];
    int Pos;  /**< where the next sample goes */
    int Full; /**< 1 once the window has been filled */
} MovingAverageOnline;

/** One moving average per channel. */
typedef struct MovingAverageBank {
    MovingAverageOnline Filters[MOVING_AVERAGE_CHANNELS];
    int Count; /**< channels in use */
} MovingAverageBank;

/** A spike filter and the moving average after it. */
typedef struct LimitAverageOnline {
    AmplitudeLimitOnline Limiter;
    MovingAverageOnline Average;
} LimitAverageOnline;

/* ---- Derivative ------------------------------------------------------------------------------------------------- */

/** The derivative of a record by central differences.
 *   x   n samples, read only        dx  n values, in the unit of x over that of h; must not overlap x
 *   h   sampling interval
 *     dx[i] = (x[i+1] - x[i-1]) / (2h)
 * At the ends the missing sample continues the straight line of the last two.  n < 2 writes nothing. */
MENSURA_EXPORT void central_difference(const double *x, double *dx, int n, double h);

/** The same for a stream: the derivative at the sample before x, one sample late.  The first two calls give 0. */
MENSURA_EXPORT void init_central_difference_online(CentralDiffOnline *s, double h);
MENSURA_EXPORT double central_difference_online(CentralDiffOnline *s, double x);
MENSURA_EXPORT void init_central_difference_onlines(CentralDiffOnline *s, int count, double h);
MENSURA_EXPORT void central_difference_onlines(CentralDiffOnline *s, const double *x, double *out, int count);

/* ---- Spikes ----------------------------------------------------------------------------------------------------- */

/** Rejects spikes: a sample that differs by more than limit from the last accepted one is replaced by that one.  The
 * first six samples pass unchecked, and a jump that lasts is taken for real: 18 samples in a row are rejected, the 19th
 * is accepted.  NaN is accepted, and so is what follows it.
 * After a spike of k samples the signal may have moved on by k + 1 steps: choose limit above what that can be. */
MENSURA_EXPORT void init_amlitude_limit_filer_online(AmplitudeLimitOnline *s, double limit);
MENSURA_EXPORT double amlitude_limit_filer_online(AmplitudeLimitOnline *s, double x);
MENSURA_EXPORT void init_amlitude_limit_filer_onlines(AmplitudeLimitOnline *s, int count, double limit);
MENSURA_EXPORT void amlitude_limit_filer_onlines(AmplitudeLimitOnline *s, const double *x, double *out, int count);

/* ---- Moving average --------------------------------------------------------------------------------------------- */

/** The mean of the last length samples; of all samples so far, until there are as many.  The window is summed anew in
 * every call, in the order in which it lies in memory, so that no rounding error stays: time grows with length.
 * A length outside 1 .. 2000 writes past the record: it is the caller's duty to keep within it. */
MENSURA_EXPORT void init_move_average_filter_online(MovingAverageOnline *s, int length);
MENSURA_EXPORT double move_average_filter_online(MovingAverageOnline *s, double x);

/** A bank of count channels, which it keeps.  x and out have Count numbers; returns Count.  A bank costs a fraction of
 * its channels one by one.
 * A count above 10 writes past the bank: it is the caller's duty to keep within it. */
MENSURA_EXPORT void init_move_average_filter_onlines(MovingAverageBank *b, int length, int count);
MENSURA_EXPORT int move_average_filter_onlines(MovingAverageBank *b, const double *x, double *out);

/* ---- Spikes, then moving average -------------------------------------------------------------------------------- */

/** The moving average of what the spike filter lets through; length as above. */
MENSURA_EXPORT void init_amlitude_limit_move_average_filter_online(LimitAverageOnline *s, int length, double limit);
MENSURA_EXPORT double amlitude_limit_move_average_filter_online(LimitAverageOnline *s, double x);
MENSURA_EXPORT void init_amlitude_limit_move_average_filter_onlines(LimitAverageOnline *s, int length, int count,
                                                                    double limit);
MENSURA_EXPORT void amlitude_limit_move_average_filter_onlines(LimitAverageOnline *s, const double *x, double *out,
                                                               int count);

#ifdef __cplusplus
}
#endif

#endif
