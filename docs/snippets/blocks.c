// docs/filters.md: a stream filtered block by block.
#include <math.h>
#include <mensura/sos.h>

#include "check.h"
#include "low_pass_40.h"

enum { BLOCK = 64, BLOCKS = 20 };

typedef struct {
    int at;
} Source;

static int read_block(Source *source, double *x) { /* a stand-in for a device */
    for (int i = 0; i < BLOCK; ++i) x[i] = 5 + sin(0.3 * (source->at++));
    return source->at <= BLOCK * BLOCKS;
}

static double sum;
static void write_block(const double *y) {
    for (int i = 0; i < BLOCK; ++i) sum += y[i];
}

int main(void) {
    double sos[6 * MENSURA_SOS_MAX_SECTIONS];
    const int sections = design_low_pass_40(sos);
    CHECK(sections == 3);

    Source source = {0}, *device = &source;
    // [shown]
    double block[BLOCK], state[4 * MENSURA_SOS_MAX_SECTIONS];
    int more = read_block(device, block);
    mensura_sos_steady_state(sos, sections, block[0], state); /* or all zero: from rest */
    for (; more; more = read_block(device, block)) {          /* of any length, 1 too */
        mensura_sos_filter(sos, sections, state, block, 1, block, 1, BLOCK);
        write_block(block);
    }
    // [end]

    static double whole[BLOCK * BLOCKS];
    double expected = 0;
    for (int i = 0; i < BLOCK * BLOCKS; ++i) whole[i] = 5 + sin(0.3 * i);
    CHECK(mensura_sos_steady_state(sos, sections, whole[0], state) == 0);
    CHECK(mensura_sos_filter(sos, sections, state, whole, 1, whole, 1, BLOCK * BLOCKS) == 0);
    for (int i = 0; i < BLOCK * BLOCKS; ++i) expected += whole[i];
    CHECK(sum == expected); /* the bits of the whole */
    return 0;
}
