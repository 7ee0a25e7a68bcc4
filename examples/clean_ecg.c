/* Takes the mains hum out of an electrocardiogram:  clean_ecg < examples/data/ecg_mitdb_208.csv > clean.csv
 *
 * A low-pass takes height from the beats along with the hum; a notch, 4 Hz wide, leaves them as they are.  Both run
 * forwards and backwards, so that nothing is delayed.  What each has done goes to standard error. */
#include <ctype.h>
#include <math.h>
#include <mensura/mensura.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { RATE = 360, MAX_SAMPLES = 100000 }; /* samples a second; samples */

static double raw[MAX_SAMPLES], smooth[MAX_SAMPLES], clean[MAX_SAMPLES]; /* mV */

/* The difference between the highest and the lowest sample of a second, which holds a beat: the mean of all seconds. */
static double height_of_beats(const double *x, int n) {
    const int seconds = n / RATE;
    double sum = 0;
    for (int second = 0; second < seconds; ++second) {
        double lowest = INFINITY, highest = -INFINITY;
        for (int i = second * RATE; i < (second + 1) * RATE; ++i) {
            lowest = fmin(lowest, x[i]);
            highest = fmax(highest, x[i]);
        }
        sum += highest - lowest;
    }
    return sum / seconds;
}

static void report(const char *name, const double *x, int n) {
    const double hum = 2.0 / n * SingleFreqDFT(x, n, 2 * 60.0 / RATE); /* the amplitude of a sine of 60 Hz */
    fprintf(stderr, "%-16s hum %6.3f uV   beats %.3f mV\n", name, 1e3 * hum, height_of_beats(x, n));
}

int main(void) {
    char line[256];
    int n = 0;
    while (n < MAX_SAMPLES && fgets(line, sizeof line, stdin) != NULL) {
        const char *const comma = strchr(line, ','); /* after the time */
        if (comma != NULL && isdigit((unsigned char)line[0])) raw[n++] = strtod(comma + 1, NULL);
    }
    if (n < RATE) return fprintf(stderr, "clean_ecg: less than a second\n"), 1;

    memcpy(smooth, raw, sizeof raw);
    dataZeroPhaseFilter(smooth, n, 1.0 / RATE, 0, 50.0);

    TIIRFilter notch;
    initTIIRFilter(&notch, ptNotch, 60.0, RATE);
    notch.Spec.NormBandwidth = 2 * 4.0 / RATE;
    notch.Spec.Proto.NumPoles = 2;
    notch.Coeffs = CalcIIRFilterCoeff(notch.Spec);
    IIRFilterZeroPhase(&notch, raw, clean, n);

    report("raw", raw, n);
    report("low-pass, 50 Hz", smooth, n);
    report("notch, 60 Hz", clean, n);
    puts("time_s,ecg_mV");
    for (int i = 0; i < n; ++i) printf("%.6f,%.6f\n", (double)i / RATE, clean[i]);
    return fflush(stdout) == 0 && !ferror(stdout) ? 0 : 1;
}
