// docs/filters.md: many channels at once.
#include <math.h>
#include <mensura/sos.h>

#include "check.h"
#include "low_pass_40.h"

int main(void) {
    double sos[6 * MENSURA_SOS_MAX_SECTIONS];
    const int sections = design_low_pass_40(sos);
    CHECK(sections == 3);

    // [shown]
    enum { CHANNELS = 8, FRAMES = 500 };
    /* Interleaved: a row holds one sample of each channel.  4 doubles a section for each channel in turn. */
    static double frames[FRAMES][CHANNELS];
    static double state[CHANNELS * 4 * MENSURA_SOS_MAX_SECTIONS];
    // [end]
    for (int i = 0; i < FRAMES; ++i)
        for (int c = 0; c < CHANNELS; ++c) frames[i][c] = sin(0.01 * (c + 1) * i);
    double one[FRAMES], rest[4 * MENSURA_SOS_MAX_SECTIONS] = {0};
    CHECK(mensura_sos_filter(sos, sections, rest, &frames[0][5], CHANNELS, one, 1, FRAMES) == 0);
    // [call]
    /* In place.  From one sample of a channel to its next are CHANNELS doubles, from one channel to the next 1. */
    double *const x = frames[0];
    mensura_sos_filter_channels(sos, sections, state, CHANNELS, x, CHANNELS, 1, x, CHANNELS, 1, FRAMES);
    // [end]
    for (int i = 0; i < FRAMES; ++i) CHECK(frames[i][5] == one[i]);
    return 0;
}
