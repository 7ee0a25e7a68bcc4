/* Takes the 60 Hz hum out of an electrocardiogram:  clean_ecg [input.csv [cutoff_hz]]
 *
 * The input has two columns, time in s and signal in mV, evenly sampled; blank lines, lines starting with '#' and one
 * header line are skipped.  The same low-pass is run one way, as it would be while measuring, and both ways, for which
 * the record must be complete: one way the signal lags behind the raw one, by 16 ms with the default cut-off; both ways
 * it has zero phase, and the filter counts twice.
 *
 * Prints what the filter did, and writes into the current directory
 *     ecg_clean.csv     time_s,raw_mV,clean_mV,zero_phase_mV         the signals; clean_mV is the one-way signal
 *     ecg_spectrum.csv  frequency_Hz,raw_mV,clean_mV,zero_phase_mV   amplitudes: a sine of 1 mV shows as 1 mV
 *
 * Exit status: 0 done, 1 could not write or no memory, 2 bad input or arguments.  The files of an earlier run stay as
 * they were until both new ones are complete; only when the printing fails, which is status 1, have they been replaced.
 */
#include <complex.h>
#include <errno.h>
#include <limits.h>
#include <math.h>
#include <mensura/mensura.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define DEFAULT_INPUT "examples/data/ecg_mitdb_208.csv"
#define CLEAN "ecg_clean.csv"
#define SPECTRUM "ecg_spectrum.csv"
#define PARTIAL ".tmp" /* appended until a file is complete */

/* The -3 dB point lies near half of the cut-off asked for (iir.h).  50 Hz puts it at 23.6 Hz, leaves a tenth of the hum
 * and about four fifths of an R peak; 40 Hz leaves a thirtieth of the hum but three quarters of the peaks, 60 Hz a
 * fifth of the hum. */
static const double kDefaultCutoff = 50.0;
static const double kHumLow = 58.0, kHumHigh = 62.0; /* Hz */
static const double kPi = 3.14159265358979323846;
enum { DONE = 0, FAILED = 1, BAD_INPUT = 2 };
enum { RAW, ONE_WAY, ZERO_PHASE, SIGNALS };

typedef struct Sample {
    double time, raw; /* s, mV */
    size_t line;      /* in the input */
} Sample;

typedef struct Record {
    Sample *samples;
    size_t count, capacity;
} Record;

/* What an output file holds: time or frequency, and the signals or their spectra. */
typedef struct Table {
    double *x, *y[SIGNALS]; /* one block of memory, owned by x */
    size_t rows;
} Table;

typedef struct Peaks {
    size_t *at; /* samples, ascending */
    size_t count;
    double sign; /* 1: they point upwards, -1: downwards */
} Peaks;

typedef struct Results {
    size_t peaks;
    double rms_uv[SIGNALS], shift_ms[SIGNALS]; /* shift: NaN if not to be measured */
} Results;

/* One line on stderr; line 0 stands for the file as a whole. */
static int complain(int status, const char *file, size_t line, const char *what) {
    if (line > 0)
        fprintf(stderr, "clean_ecg: %s:%zu: %s\n", file, line, what);
    else
        fprintf(stderr, "clean_ecg: %s: %s\n", file, what);
    return status;
}

/* One finite number that ends, blanks aside, at the character `end`; returns where it ends, or NULL. */
static const char *parse_number(const char *text, char end, double *value) {
    char *rest;
    *value = strtod(text, &rest);
    if (rest == text || !isfinite(*value)) return NULL;
    rest += strspn(rest, " \t\r\n");
    return *rest == end ? rest : NULL;
}

static int append(Record *record, Sample sample) {
    if (record->count == record->capacity) {
        const size_t capacity = record->capacity > 0 ? 2 * record->capacity : 4096;
        Sample *const grown =
            capacity > SIZE_MAX / sizeof(Sample) ? NULL : realloc(record->samples, capacity * sizeof(Sample));
        if (grown == NULL) return 0;
        record->samples = grown;
        record->capacity = capacity;
    }
    record->samples[record->count++] = sample;
    return 1;
}

static int read_samples(FILE *input, const char *file, Record *record) {
    char text[1024];
    int may_be_header = 1;
    for (size_t line = 1; fgets(text, sizeof text, input) != NULL; ++line) {
        if (strchr(text, '\n') == NULL && !feof(input))
            return complain(BAD_INPUT, file, line, "not text, or a line longer than 1022 characters");
        if (text[0] == '#' || text[strspn(text, " \t\r\n")] == '\0') continue;
        const int header = may_be_header && strchr("+-.0123456789", text[strspn(text, " \t")]) == NULL;
        may_be_header = 0;
        if (header) continue;

        Sample sample = {.line = line};
        const char *const comma = parse_number(text, ',', &sample.time);
        if (comma == NULL || parse_number(comma + 1, '\0', &sample.raw) == NULL)
            return complain(BAD_INPUT, file, line, "expected two numbers: time in s, signal in mV");
        if (record->count > 0 && sample.time <= record->samples[record->count - 1].time)
            return complain(BAD_INPUT, file, line, "time does not increase");
        if (!append(record, sample)) return complain(FAILED, file, line, "out of memory");
    }
    return ferror(input) ? complain(BAD_INPUT, file, 0, strerror(errno)) : DONE;
}

/* Sampling rate in Hz from the time column.  Its times are rounded: a rate within 10 ppm of whole hertz, better than a
 * sampling clock keeps, is whole hertz. */
static int find_rate(const char *file, const Record *record, double *rate) {
    const Sample *const s = record->samples;
    const size_t n = record->count;
    *rate = n < 2 ? HUGE_VAL : (double)(n - 1) / (s[n - 1].time - s[0].time);
    if (n > INT_MAX) return complain(BAD_INPUT, file, 0, "too many samples");
    if (n < 2 || (double)n * (kHumHigh - kHumLow) < *rate)
        return complain(BAD_INPUT, file, 0, "too few samples: a quarter of a second at least is needed");
    size_t worst = 0;
    double limit = 0.5; /* in mean steps: passes times rounded to milliseconds, but no lost sample */
    for (size_t i = 1; i < n; ++i) {
        const double off = fabs((s[i].time - s[i - 1].time) * *rate - 1.0);
        if (off <= limit) continue;
        limit = off;
        worst = i;
    }
    if (worst > 0)
        return complain(BAD_INPUT, file, s[worst].line, "not evenly sampled: this time step is off the mean");
    if (fabs(*rate - round(*rate)) <= 1e-5 * round(*rate)) *rate = round(*rate);
    return DONE;
}

static double complex turn_back(double angle) { return cos(angle) - (double complex)I * sin(angle); }

/* |H| of the cascade at f: the product of |a0 (b0 + b1 u + b2 u^2) / (1 + a1 u + a2 u^2)|, u = exp(-2 pi i f / fs). */
static double magnitude(const IIRCoeffs *c, double f, double fs) {
    const double complex u = turn_back(2.0 * kPi * f / fs);
    double h = 1.0;
    for (int k = 0; k < c->NumSections; ++k)
        h *= cabs(c->a0[k] * (c->b0[k] + u * (c->b1[k] + u * c->b2[k])) / (1.0 + u * (c->a1[k] + u * c->a2[k])));
    return h;
}

/* Where a low-pass falls to half its power, in Hz: 60 bisections exhaust a double. */
static double half_power_point(const IIRCoeffs *c, double fs) {
    double low = 0.0, high = 0.5 * fs;
    for (int i = 0; i < 60; ++i) {
        const double middle = 0.5 * (low + high);
        *(magnitude(c, middle, fs) > sqrt(0.5) ? &low : &high) = middle;
    }
    return low;
}

static int allocate(Table *table, size_t rows) {
    table->x = calloc(rows, (1 + SIGNALS) * sizeof(double));
    for (size_t s = 0; s < SIGNALS && table->x != NULL; ++s) table->y[s] = table->x + (s + 1) * rows;
    table->rows = rows;
    return table->x != NULL;
}

static int make_signals(const Record *record, TIIRFilter *filter, Table *signals) {
    if (!allocate(signals, record->count)) return 0;
    for (size_t i = 0; i < record->count; ++i) {
        signals->x[i] = record->samples[i].time;
        signals->y[RAW][i] = record->samples[i].raw;
        signals->y[ONE_WAY][i] = IIRFilter(filter, record->samples[i].raw);
    }
    filter->Primed = 0;
    IIRFilterZeroPhase(filter, signals->y[RAW], signals->y[ZERO_PHASE], (int)record->count);
    return 1;
}

/* A Hann window of mean 1.  Without memory WindowData leaves the data as they were, and all of them are 1. */
static int make_window(double *window, int n) {
    for (int i = 0; i < n; ++i) window[i] = 1.0;
    WindowData(window, n, wkHanning, 0.0, 0.0, 1);
    return n < 3 || window[0] < 1.0;
}

static double energy(const double *re, const double *im, int size) {
    double sum = 0.0;
    for (int i = 0; i < size; ++i) sum += re[i] * re[i] + im[i] * im[i];
    return sum;
}

/* Adds |X_k|^2 of n samples, without their mean, windowed and zero-padded to `size`.  Without memory FFT leaves the
 * data as they were, otherwise it divides their energy by `size`: returns 0 if it has not. */
static int add_power(const double *signal, const double *window, int n, double *re, double *im, int size,
                     double *power) {
    double sum = 0.0;
    for (int i = 0; i < n; ++i) sum += signal[i];
    for (int i = 0; i < size; ++i) {
        re[i] = i < n ? (signal[i] - sum / n) * window[i] : 0.0;
        im[i] = 0.0;
    }
    const double before = energy(re, im, size);
    FFT(re, im, size, 0);
    for (int k = 0; k <= size / 2; ++k) power[k] += re[k] * re[k] + im[k] * im[k];
    return !(energy(re, im, size) > 0.5 * before);
}

/* Samples in one transform.  A record too long for FFT is cut into equal parts and the powers averaged. */
static int part_length(size_t samples) {
    const size_t longest = 1048576, parts = (samples - 1) / longest + 1;
    return (int)(samples / parts);
}

/* Amplitudes from 0 to fs / 2.  FFT divides by its size, of which n samples are signal; the bins in between share their
 * sine with the mirrored bin. */
static int make_spectra(const Table *signals, double fs, Table *spectra) {
    const int n = part_length(signals->rows), size = RequiredFFTSize(n);
    const size_t parts = signals->rows / (size_t)n;
    double *const re = calloc((size_t)size, sizeof *re), *const im = calloc((size_t)size, sizeof *im);
    double *const window = calloc((size_t)size, sizeof *window);
    int enough =
        re != NULL && im != NULL && window != NULL && allocate(spectra, (size_t)size / 2 + 1) && make_window(window, n);
    for (int s = 0; s < SIGNALS; ++s)
        for (size_t part = 0; part < parts && enough; ++part)
            enough = add_power(signals->y[s] + part * (size_t)n, window, n, re, im, size, spectra->y[s]);
    free(re);
    free(im);
    free(window);
    for (int k = 0; k <= size / 2 && enough; ++k) {
        const double scale = (k == 0 || k == size / 2 ? 1.0 : 2.0) * size / n;
        spectra->x[k] = k * fs / size;
        for (int s = 0; s < SIGNALS; ++s) spectra->y[s][k] = scale * sqrt(spectra->y[s][k] / (double)parts);
    }
    return enough;
}

/* The rms from 58 to 62 Hz, in mV.  A sine of amplitude A puts A^2 times 3 size / (2 (n + 1)) into the squares around
 * its bin: that is the noise bandwidth of the window, 1.5 n / (n + 1) bins of n samples, in bins of the padded size. */
static double hum_rms(const Table *spectra, int s, int n) {
    const double size = 2.0 * (double)(spectra->rows - 1);
    double sum = 0.0;
    for (size_t k = 0; k < spectra->rows; ++k)
        if (spectra->x[k] >= kHumLow && spectra->x[k] <= kHumHigh) sum += spectra->y[s][k] * spectra->y[s][k];
    return sqrt(sum * (n + 1) / (3.0 * size));
}

static int ascending(const void *a, const void *b) {
    const double x = *(const double *)a, y = *(const double *)b;
    return (x > y) - (x < y);
}

/* How far sample i stands out above both samples at a distance of `reach`: a drifting baseline does not count. */
static double height(const double *x, size_t i, size_t reach, double sign) {
    return fmin(sign * (x[i] - x[i - reach]), sign * (x[i] - x[i + reach]));
}

/* Half the height of the R peaks, which only the top half per cent of the samples reach; 0 if nothing stands out.  Of
 * the heights of white noise half a per cent exceed 1.9 times the lower quartile, of a sine 1.4 times, of the record
 * that comes with this program 6.7 times. */
static double height_threshold(const double *x, size_t n, size_t reach, double sign, double *heights) {
    const size_t count = n - 2 * reach;
    for (size_t i = 0; i < count; ++i) heights[i] = height(x, i + reach, reach, sign);
    qsort(heights, count, sizeof *heights, ascending);
    const double top = heights[(size_t)(0.995 * (double)count)];
    return top > -3.0 * heights[count / 4] ? 0.5 * top : 0.0;
}

static int is_summit(const double *x, size_t i, size_t reach, double sign) {
    for (size_t k = i - reach; k <= i + reach; ++k)
        if (sign * x[k] > sign * x[i]) return 0;
    return 1;
}

/* R peaks, the sharp ones of a heart beat: the highest of 60 ms to either side, a quarter of a second apart at least.
 * They point to the side on which the signal stands out further.  scratch has room for n numbers. */
static void find_r_peaks(const double *x, size_t n, double fs, double *scratch, Peaks *peaks) {
    const size_t reach = (size_t)ceil(0.06 * fs);
    peaks->count = 0;
    if (n <= 2 * reach) return;
    const double upwards = height_threshold(x, n, reach, 1.0, scratch);
    const double downwards = height_threshold(x, n, reach, -1.0, scratch), threshold = fmax(upwards, downwards);
    peaks->sign = downwards > upwards ? -1.0 : 1.0;
    if (threshold <= 0.0) return;
    for (size_t i = reach; i < n - reach; ++i) {
        if (height(x, i, reach, peaks->sign) < threshold || !is_summit(x, i, reach, peaks->sign)) continue;
        peaks->at[peaks->count++] = i;
        i += (size_t)(0.25 * fs);
    }
}

/* Where the signal is largest from sample `first` to `last`: the vertex of the parabola through three samples.  NaN if
 * that is at either end, where it may still rise. */
static double summit(const double *x, size_t first, size_t last, double sign) {
    size_t top = first;
    for (size_t i = first; i <= last; ++i)
        if (sign * x[i] > sign * x[top]) top = i;
    if (top == first || top == last) return nan("");
    return (double)top + 0.5 * (x[top - 1] - x[top + 1]) / (x[top - 1] - 2.0 * x[top] + x[top + 1]);
}

/* The median, in samples, of how far the peaks lie behind those of the raw signal; NaN if most have none within reach.
 * They are looked for from 40 ms before to 40 ms + 1 / cut-off after, as the filter delays by 0.84 / cut-off at most,
 * but never among the peaks of the next beat. */
static double median_shift(const Table *signals, int s, const Peaks *peaks, double fs, double cutoff, double *shifts) {
    const size_t before = (size_t)ceil(0.04 * fs), after = (size_t)ceil(fmin(0.04 + 1.0 / cutoff, 0.25) * fs);
    size_t inside = 0, count = 0;
    for (const size_t *at = peaks->at; at < peaks->at + peaks->count && *at + after < signals->rows; ++at, ++inside) {
        shifts[count] = summit(signals->y[s], *at - before, *at + after, peaks->sign) -
                        summit(signals->y[RAW], *at - 1, *at + 1, peaks->sign);
        if (!isnan(shifts[count])) ++count;
    }
    if (count == 0 || 2 * count < inside) return nan("");
    qsort(shifts, count, sizeof *shifts, ascending);
    return 0.5 * (shifts[(count - 1) / 2] + shifts[count / 2]);
}

static int measure(const Table *signals, const Table *spectra, double fs, double cutoff, Results *results) {
    double *const scratch = calloc(signals->rows, sizeof *scratch);
    Peaks peaks = {.at = calloc(signals->rows, sizeof *peaks.at), .count = 0};
    const int enough = scratch != NULL && peaks.at != NULL;
    if (enough) find_r_peaks(signals->y[RAW], signals->rows, fs, scratch, &peaks);
    for (int s = 0; s < SIGNALS && enough; ++s) {
        results->rms_uv[s] = 1e3 * hum_rms(spectra, s, part_length(signals->rows));
        results->shift_ms[s] = 1e3 / fs * median_shift(signals, s, &peaks, fs, cutoff, scratch);
    }
    results->peaks = peaks.count;
    free(scratch);
    free(peaks.at);
    return enough;
}

/* In 15 to 17 digits, the fewest that read back as the same number; then the character `end`. */
static void print_number(FILE *out, double value, char end) {
    char text[32];
    int digits = 14;
    do snprintf(text, sizeof text, "%.*g", ++digits, value);
    while (digits < 17 && strtod(text, NULL) != value);
    fprintf(out, "%s%c", text, end);
}

static int write_table(const char *file, const char *header, const Table *table) {
    FILE *const out = fopen(file, "w");
    if (out == NULL) return complain(FAILED, file, 0, strerror(errno));
    fputs(header, out);
    for (size_t i = 0; i < table->rows && !ferror(out); ++i) {
        print_number(out, table->x[i], ',');
        for (int s = 0; s < SIGNALS; ++s) print_number(out, table->y[s][i], s + 1 < SIGNALS ? ',' : '\n');
    }
    const int broken = ferror(out);
    if (fclose(out) == 0 && !broken) return DONE;
    complain(FAILED, file, 0, strerror(errno));
    remove(file);
    return FAILED;
}

/* The one thing likely to let a rename fail after both files could be written: then it is too late for the first. */
static int is_directory(const char *file) {
    FILE *const input = fopen(file, "r+");
    if (input != NULL) fclose(input);
    return input == NULL && errno == EISDIR;
}

static int write_files(const Table *signals, const Table *spectra) {
    if (is_directory(CLEAN)) return complain(FAILED, CLEAN, 0, strerror(EISDIR));
    if (is_directory(SPECTRUM)) return complain(FAILED, SPECTRUM, 0, strerror(EISDIR));
    if (write_table(CLEAN PARTIAL, "time_s,raw_mV,clean_mV,zero_phase_mV\n", signals) != DONE) return FAILED;
    const int status = write_table(SPECTRUM PARTIAL, "frequency_Hz,raw_mV,clean_mV,zero_phase_mV\n", spectra);
    if (status == DONE && rename(CLEAN PARTIAL, CLEAN) == 0 && rename(SPECTRUM PARTIAL, SPECTRUM) == 0) return DONE;
    if (status == DONE) {
        complain(FAILED, CLEAN ", " SPECTRUM, 0, strerror(errno));
        remove(SPECTRUM PARTIAL);
    }
    remove(CLEAN PARTIAL);
    return FAILED;
}

/* One row of the table: three numbers, or the reason why there are none. */
static void print_row(const char *label, const double values[SIGNALS], int decimals, const char *reason) {
    const double unit = pow(10.0, decimals);
    printf("%-26s%s", label, reason != NULL ? reason : "");
    for (int s = 0; s < SIGNALS && reason == NULL; ++s) {
        const int width = s == 0 ? 9 : 12;
        if (isnan(values[s]))
            printf("%*s", width, "-");
        else
            printf("%*.*f", width, decimals, round(values[s] * unit) / unit + 0.0); /* + 0.0: no "-0.00" */
    }
    putchar('\n');
}

static int print_results(const Results *results, size_t samples, const IIRCoeffs *design, double cutoff, double fs) {
    const int hum_in_band = kHumHigh < 0.5 * fs;
    printf("samples                  %10zu     (%.6g s)\n", samples, (double)samples / fs);
    printf("sampling rate            %10.6g Hz\n", fs);
    printf("cut-off, requested       %10.6g Hz\n", cutoff);
    printf("-3 dB point, measured    %10.6g Hz\n", half_power_point(design, fs));
    if (hum_in_band) printf("gain at 60 Hz, measured  %10.1f dB\n", 20.0 * log10(magnitude(design, 60.0, fs)));
    printf("R peaks                  %10zu\n\n", results->peaks);
    printf("%35s%12s%12s\n", "raw", "one-way", "zero-phase");
    print_row("rms 58-62 Hz (uV)", results->rms_uv, 3,
              hum_in_band ? NULL : "not measured: beyond half the sampling rate");
    print_row("shift of the R peaks (ms)", results->shift_ms, 2, results->peaks > 0 ? NULL : "no R peaks found");
    if (results->peaks > 0)
        puts("  (smoothing moves the top of a peak towards its slower flank, even with zero phase)");
    printf("\nsignals in               %s\nspectra in               %s\n", CLEAN, SPECTRUM);
    return fflush(stdout) == 0 && !ferror(stdout) ? DONE : complain(FAILED, "standard output", 0, strerror(errno));
}

static int process(const char *file, const Record *record, double cutoff, double fs, Table *signals, Table *spectra) {
    TIIRFilter filter;
    Results results;
    initTIIRFilter(&filter, ptLowPass, cutoff, fs);
    if (!(fabs(magnitude(&filter.Coeffs, 0.0, fs) - 1.0) < 1e-3)) /* its coefficients round to nonsense */
        return complain(BAD_INPUT, file, 0, "the cut-off is too far below the sampling rate");
    if (!make_signals(record, &filter, signals) || !make_spectra(signals, fs, spectra) ||
        !measure(signals, spectra, fs, cutoff, &results))
        return complain(FAILED, file, 0, "out of memory");
    const int status = write_files(signals, spectra);
    return status != DONE ? status : print_results(&results, record->count, &filter.Coeffs, cutoff, fs);
}

static int clean_record(const char *file, Record *record, const char *cutoff_text) {
    double fs, cutoff = kDefaultCutoff;
    if (cutoff_text != NULL && (parse_number(cutoff_text, '\0', &cutoff) == NULL || cutoff <= 0.0))
        return complain(BAD_INPUT, cutoff_text, 0, "the cut-off must be a number of Hz above 0");
    FILE *const input = fopen(file, "r");
    if (input == NULL) return complain(errno == ENOMEM ? FAILED : BAD_INPUT, file, 0, strerror(errno));
    int status = read_samples(input, file, record);
    fclose(input);
    if (status == DONE) status = find_rate(file, record, &fs);
    if (status != DONE) return status;
    if (cutoff >= 0.5 * fs) return complain(BAD_INPUT, file, 0, "the cut-off must be below half the sampling rate");
    Table signals = {.x = NULL}, spectra = {.x = NULL};
    status = process(file, record, cutoff, fs, &signals, &spectra);
    free(signals.x);
    free(spectra.x);
    return status;
}

int main(int argc, char **argv) {
    if (argc > 3) return complain(BAD_INPUT, argv[3], 0, "too many arguments: clean_ecg [input.csv [cutoff_hz]]");
    Record record = {NULL, 0, 0};
    const int status = clean_record(argc > 1 ? argv[1] : DEFAULT_INPUT, &record, argc > 2 ? argv[2] : NULL);
    free(record.samples);
    return status;
}
