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

/* Filters a record forwards and backwards; both ways together have -3 dB at the edges.  width: of a notch, in Hz. */
static void both_ways(int pass_type, double frequency, double width, int poles, const double *x, double *y, int n) {
    mensura_sos_request request;
    mensura_sos_default_request(&request, sizeof request);
    request.pass_type = pass_type;
    request.poles = poles;
    request.passes = 2;
    request.rate = RATE;
    request.band = MENSURA_SOS_CENTRE; /* for the notch */
    request.edge[0] = frequency;
    request.edge[1] = width;

    double sos[6 * MENSURA_SOS_MAX_SECTIONS];
    int code = mensura_sos_design(&request, sos, MENSURA_SOS_MAX_SECTIONS);
    if (code > 0) code = mensura_sos_filtfilt(sos, code, MENSURA_SOS_ENDS_ODD, -1, x, 1, y, 1, n, NULL);
    if (code < 0) {
        fprintf(stderr, "clean_ecg: %s\n", mensura_sos_message(code));
        exit(1);
    }
}

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

    both_ways(ptLowPass, 40, 0, 6, raw, smooth, n);
    both_ways(ptNotch, 60, 4, 2, raw, clean, n);

    report("raw", raw, n);
    report("low-pass, 40 Hz", smooth, n);
    report("notch, 60 Hz", clean, n);
    puts("time_s,ecg_mV");
    for (int i = 0; i < n; ++i) printf("%.6f,%.6f\n", (double)i / RATE, clean[i]);
    return fflush(stdout) == 0 && !ferror(stdout) ? 0 : 1;
}
