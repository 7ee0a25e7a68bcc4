/** @defgroup iir IIR filters
 *
 * `mensura/iir.h`: from a cut-off and a sampling rate to a running cascade of second-order sections.  A design runs a
 * fixed selection of its sections, so that its cut-off is mostly not the -3 dB point: docs/iir.md.  New programs find
 * filters with the level that they ask for in mensura/sos.h.
 *
 * @code
 * TIIRFilter f;
 * initTIIRFilter(&f, ptLowPass, 40.0, 360.0);     // 40 Hz at 360 samples a second
 * y = IIRFilter(&f, x);                           // once per sample
 * @endcode
 *
 * **Units.**  Frequencies in a request are fractions of the Nyquist frequency: 2 fc / fs, so 1.0 is half the sampling
 * rate.  Ripple, attenuation and gain are in dB.  Analog prototypes have their corner at 1 rad/s.
 *
 * **Memory.**  Records are plain, of fixed capacity and owned by the caller.  Nothing here allocates except
 * dataZeroPhaseFilter when it has to find its cut-off.  IIRCoeffs takes 4 KB, TIIRFilter 5.7 KB and TIIRFilterBank
 * 57 KB: mind small stacks.  On x86-64 a design takes up to 32 KB of stack, FilterWithIIR 12 KB; without optimisation
 * FilterWithIIR takes 28 KB, IIRFilterZeroPhase 13 KB, IIRFilters and SectCalc 10 KB.
 *
 * **Threads.**  Separate records may be designed and run in separate threads at once; one record belongs to one thread
 * at a time.  FilterWithIIR and SectCalc have registers that the whole process shares: one thread at a time.
 *
 * **Errors.**  None are reported.  Prototype settings outside the ranges given below are clamped.  Frequencies are not
 * checked: outside 0 < fc < fs / 2 a design is unstable or meaningless, and NaN, infinite and zero ones flow into the
 * coefficients as the arithmetic gives them.  Every call returns in bounded time and stays inside its arrays, except
 * where a count is named as the caller's duty.
 * @{ */
#ifndef MENSURA_IIR_H
#define MENSURA_IIR_H

#include <mensura/complex.h>
#include <mensura/export.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Capacity of every section, register and root array below. */
enum {
    MAX_IIR_SECTIONS = 50 /**< most sections of a filter, and most roots of a prototype */
};

/** What a filter does with the frequencies around its cut-off. */
enum IIRPassType {
    ptLowPass = 0,  /**< low-pass */
    ptHighPass = 1, /**< high-pass */
    ptBandPass = 2, /**< band-pass */
    ptNotch = 3,    /**< notch (band-stop) */
    ptAllPass = 4   /**< all-pass: changes the phase alone */
};

/** The analog low-pass prototype that a filter is made from.  Orders above the largest one given here are clamped. */
enum ProtoFamily {
    pfButterworth = 0,      /**< Butterworth: maximally flat; order up to 20 */
    pfGaussian = 1,         /**< Gaussian: the magnitude approximates exp(-w^2 / 2); order up to 12 */
    pfBessel = 2,           /**< Bessel: maximally flat delay; order up to 12 */
    pfAdjustable = 3,       /**< Adjustable: from Gaussian (Gamma = -1) to steep (Gamma = 1); order up to 20 */
    pfChebyshev = 4,        /**< Chebyshev: ripple in the pass band; order up to 20 */
    pfInverseChebyshev = 5, /**< inverse Chebyshev (type 2): ripple in the stop band; order up to 15 */
    pfPapoulis = 6,         /**< Papoulis (Legendre): the steepest monotonic one; order up to 20 */
    pfElliptic = 7          /**< elliptic (Cauer): ripple in both bands; order up to 15 */
};

/** @name Records
 * @{ */

/** The analog prototype requested. */
typedef struct ProtoSpec {
    int Family;    /**< a ProtoFamily code */
    int NumPoles;  /**< order, clamped to 1 .. the family's largest */
    double Ripple; /**< pass-band ripple in dB, clamped to 0.0001 .. 1 (elliptic: 0.001 .. 1; Chebyshev of order 16, 17,
                            18, 19, 20: to at most 0.5, 0.4, 0.25, 0.125, 0.1) */
    double StopBandDb; /**< stop-band attenuation in dB, clamped to 20 .. 120 */
    double Gamma;      /**< shape of the Adjustable family, clamped to -1 .. 1 */
} ProtoSpec;

/** A design request. */
typedef struct IIRDesignSpec {
    int PassType;         /**< an IIRPassType code */
    double NormCutoff;    /**< cut-off, for band types the centre, as 2 f / fs */
    double NormBandwidth; /**< bandwidth of band-pass and notch, same unit */
    double GainDb;        /**< overall pass-band gain in dB, spread evenly over the sections */
    ProtoSpec Proto;      /**< the prototype */
} IIRDesignSpec;

/** A digital cascade: its sections k < NumSections, applied one after the other.
 * Each has the transfer function
 *
 *     H_k(z) = a0[k] (b0[k] + b1[k] z^-1 + b2[k] z^-2) / (1 + a1[k] z^-1 + a2[k] z^-2)
 *
 * a is the denominator, b the numerator.  Feedback is subtracted: see IIRFilter. */
typedef struct IIRCoeffs {
    double a0[MAX_IIR_SECTIONS]; /**< scale of the feed-forward sum; 1 after a design */
    double a1[MAX_IIR_SECTIONS]; /**< feedback of the output one sample ago */
    double a2[MAX_IIR_SECTIONS]; /**< feedback of the output two samples ago */
    double a3[MAX_IIR_SECTIONS]; /**< of a band type before its sections are split in two, else 0; never used */
    double a4[MAX_IIR_SECTIONS]; /**< like a3 */
    double b0[MAX_IIR_SECTIONS]; /**< weight of the input */
    double b1[MAX_IIR_SECTIONS]; /**< weight of the input one sample ago */
    double b2[MAX_IIR_SECTIONS]; /**< weight of the input two samples ago */
    double b3[MAX_IIR_SECTIONS]; /**< like a3 */
    double b4[MAX_IIR_SECTIONS]; /**< like a3 */
    int NumSections;             /**< sections in use */
} IIRCoeffs;

/** A running filter. */
typedef struct TIIRFilter {
    IIRDesignSpec Spec;             /**< the request that the filter was designed from */
    IIRCoeffs Coeffs;               /**< the cascade that runs */
    double RegX1[MAX_IIR_SECTIONS]; /**< per section: its input one sample ago */
    double RegX2[MAX_IIR_SECTIONS]; /**< per section: its input two samples ago */
    double RegY1[MAX_IIR_SECTIONS]; /**< per section: its output one sample ago */
    double RegY2[MAX_IIR_SECTIONS]; /**< per section: its output two samples ago */
    int Primed;                     /**< 0 until the first sample has been seen; set it to 0 to restart the filter */
} TIIRFilter;

/** One filter per channel. */
typedef struct TIIRFilterBank {
    TIIRFilter Filters[10]; /**< one a channel */
    int Count;              /**< filters in use */
} TIIRFilterBank;

/** An analog prototype: the product of its sections k < SectionCount.
 * The sections beyond are 1 / 1.  Each has the transfer function
 *
 *     H_k(s) = (Num2[k] s^2 + Num1[k] s + Num0[k]) / (Den2[k] s^2 + Den1[k] s + Den0[k])
 */
typedef struct LowPassProto {
    double Num2[MAX_IIR_SECTIONS]; /**< numerator, coefficient of s^2 */
    double Num1[MAX_IIR_SECTIONS]; /**< numerator, coefficient of s */
    double Num0[MAX_IIR_SECTIONS]; /**< numerator, constant term */
    double Den2[MAX_IIR_SECTIONS]; /**< denominator, coefficient of s^2 */
    double Den1[MAX_IIR_SECTIONS]; /**< denominator, coefficient of s */
    double Den0[MAX_IIR_SECTIONS]; /**< denominator, constant term */
    int SectionCount; /**< left-half-plane poles, not pairs: either member of a conjugate pair gets a section */
} LowPassProto;

/** @} */

/** @name Design and run
 * @{ */

/** Designs a filter and leaves it unprimed: the next sample fills its registers.
 * The request is stored in Spec: Butterworth, 6 poles, bandwidth 0.1, ripple 0.1 dB, stop band 60 dB, gain 0 dB,
 * gamma 0.  For other settings change Spec, assign CalcIIRFilterCoeff(Spec) to Coeffs and set Primed to 0.
 *
 * **fc IS NOT THE -3 dB POINT.**  A prototype of p poles has p sections, the most damped first, and each conjugate pair
 * has its section twice.  The low-pass, high-pass and all-pass types run the first (NumPoles + 1) / 2 of them.  The
 * default low-pass therefore runs the section of its most damped pair twice and that of the middle pair once: it has
 * about -14.4 dB at fc, and -3 dB near half of fc.  To have -3 dB at some frequency, request about twice that
 * frequency, or measure.  Inverse Chebyshev designs of high order even amplify in the stop band.  The guide iir.md
 * shows what each family and order really gives; measure a design before you rely on it.
 *
 * @param filter    the record
 * @param passType  an IIRPassType code; any other gives a cascade of zeros
 * @param fc        cut-off (band types: centre) in the unit of fs; not checked.  The lower fc, the fewer digits the
 *                  coefficients keep: the gain at DC is off by 1e-5 at fc = 1e-6 fs, and lost at 1e-8 fs
 * @param fs        sampling rate; not checked */
MENSURA_EXPORT void initTIIRFilter(TIIRFilter *filter, int passType, double fc, double fs);

/** Designs the first count filters of a bank alike, as initTIIRFilter does, and stores count in bank->Count.
 * A count < 1 designs none.  A count above 10 writes past the bank: it is the caller's duty to keep within it. */
MENSURA_EXPORT void initTIIRFilters(TIIRFilterBank *bank, int passType, int count, double fc, double fs);

/** Filters one sample and returns the cascade's output.
 * Each section has registers of its own (direct form I) and passes its output y to the next one as its input u.  With
 * ' and '' for one and two samples ago:
 *
 *     s = b0 u + b1 u' + b2 u''
 *     y = a0 s - a1 y' - a2 y''
 *
 * The first sample after a design, or after Primed was set to 0, is first written into all registers, as if the input
 * had been constant for ever and every section passed it unchanged.  That removes the start-up step of a low-pass of
 * unit gain; the other types start with a transient.
 *
 * Section 0 always runs, also when NumSections < 2; above 50 sections, 50 run.  A NaN stays in the registers until the
 * filter is restarted. */
MENSURA_EXPORT double IIRFilter(TIIRFilter *filter, double x);

/** Filters one sample of each channel of a bank: out[i] = IIRFilter(&bank->Filters[i], x[i]), with identical bits.
 * Reads x[0 .. Count-1] and writes out[0 .. Count-1]; out may be x.  Returns Count; a Count < 1 runs nothing.
 * A Count above 10 reads past the bank: it is the caller's duty to keep within it. */
MENSURA_EXPORT int IIRFilters(TIIRFilterBank *bank, const double *x, double *out);

/** Designs the cascade of a request.
 * The prototype is moved to the cut-off by a prewarped bilinear transform:
 *
 *     u = (2 / T) (1 - z^-1) / (1 + z^-1),  T = 2 tan(pi NormCutoff / 2)
 *     s = u                                 low-pass and all-pass
 *     s = 1 / u                             high-pass
 *     s = Q (u + 1 / u)                     band-pass
 *     s = 1 / (Q (u + 1 / u))               notch
 *
 * Every section has a0 = 1 and a leading denominator coefficient of 1.  Before GainDb is applied, a section has unit
 * gain at DC (low-pass) or at Nyquist (high-pass).  A band type makes two sections of one of the prototype; the two
 * together have unit gain at the centre (band-pass) or away from it (notch).
 *
 * NumSections is (NumPoles + 1) / 2, for band types NumPoles, of the request as given, at most 50.  But the prototype
 * has no more poles than the largest order of its family: sections beyond those stay 0 (band types: NaN).
 * The comment of initTIIRFilter says which sections run.  A NumPoles of 0 or less gives one first-order section, which
 * runs although NumSections is then 0 or less; band types then give zeros.  A NormBandwidth of 0 gives band types of
 * NaN.
 *
 * **BAND TYPES FAR BELOW THE SAMPLING RATE LOSE THEIR DIGITS:** 6 poles as wide as a fifth of their centre are off by
 * 3e-8 at a NormCutoff of 0.01, by 4e-4 at 0.001, and unstable at 0.0001.  Reduce the sampling rate first. */
MENSURA_EXPORT IIRCoeffs CalcIIRFilterCoeff(IIRDesignSpec spec);

/** @} */

/** @name Whole records
 * @{ */

/** Filters a record forwards and then backwards: no phase shift (zero phase), and every dB counts twice.
 * A -3 dB point becomes a -6 dB point.  The guide spectral.md shows both, and what the ends of a record suffer.
 *
 * The forward pass continues from the filter's state (an unprimed filter primes itself); the backward pass primes
 * itself with the last forward output and leaves its state in the filter.  A constant comes back, to rounding, from a
 * low-pass of unit gain.
 * @param filter  the record
 * @param x       n samples; read only when out is given
 * @param out     n samples, or null to filter in place; may be x, and must not otherwise overlap x or the filter
 * @param n       number of samples; n < 1 filters nothing and leaves the filter unprimed
 * @return the array that holds the result: out, or x when out is null */
MENSURA_EXPORT double *IIRFilterZeroPhase(TIIRFilter *filter, double *x, double *out, int n);

/** Zero-phase low-pass of a record, in place, with the default design of initTIIRFilter.
 * Without an fc it finds its cut-off from the spectrum:
 *
 *     cut-off = 15 k fs / (n - 1)
 *
 * where k is the last bin below n / 2 whose magnitude exceeds ratio times that of the largest bin p, DC left out.  One
 * line "fs,k,n,p" goes to standard output.  When no bin exceeds that (ratio of 1 or more, or all bins 0), k is p - 1.
 * The search takes a time proportional to n squared (DFT) and 20 n bytes, 32 n more during the transform; where there
 * is no memory, nothing is done.  Nothing is allocated when fc is given.
 *
 * n < 4, a k of 0 or less, and a cut-off far below fs (see initTIIRFilter) give meaningless filters: the record may
 * come back as zeros.
 * @param data   n samples
 * @param n      number of samples; n < 1 only prints
 * @param dt     sampling interval, not checked; fs = 1 / dt
 * @param ratio  for a cut-off found from the spectrum: the fraction of the spectral peak that still counts as signal
 * @param fc     cut-off in the unit of 1 / dt, clamped to fs / 2; 0 or less: found from the spectrum */
MENSURA_EXPORT void dataZeroPhaseFilter(double *data, int n, double dt, double ratio, double fc);

/** Filters a block that starts from rest: every register is 0 before x[0], and nothing is kept from call to call.
 * When a feed-forward sum or an output of any section has exceeded 1e20 in magnitude, the next section to run first
 * sets all registers of all sections to 0, and the filter goes on from there: an unstable filter gives bursts instead
 * of infinities.  NaN does not trigger that, and stays in the registers until the end of the block.
 *
 * **THE REGISTERS BELONG TO THE PROCESS:** no two calls of FilterWithIIR or SectCalc may run at once.
 * @param x       n samples
 * @param out     room for n samples; may be x and must not otherwise overlap it
 * @param n       number of samples; n < 1 touches nothing
 * @param coeffs  section 0 always runs, also when NumSections < 2; above 50 sections, 50 run */
MENSURA_EXPORT void FilterWithIIR(const double *x, double *out, int n, IIRCoeffs coeffs);

/** One section of FilterWithIIR for one sample; returns the section's output.
 * @param x       the section's input
 * @param k       index of the sample in its block; k = 0 with j = 0 starts a block
 * @param j       section, 0 .. 49; any other returns x and changes nothing
 * @param coeffs  the cascade */
MENSURA_EXPORT double SectCalc(double x, int k, int j, IIRCoeffs coeffs);

/** The frequency response of the first numSections sections of a cascade.
 * At w radians a sample it is
 *
 *     H(w) = prod_k a0[k] (b0[k] + b1[k] z^-1 + b2[k] z^-2) / (1 + a1[k] z^-1 + a2[k] z^-2),  z^-1 = exp(-j w)
 *
 * A denominator below 1e-12 in magnitude counts as 1e-12, so that a pole on the unit circle gives a large number
 * instead of infinity.
 * @param coeffs       the cascade; its NumSections is not used
 * @param numSections  0 or less: H = 1; above 50: 50
 * @param re           room for numPoints values: the real part at w = i pi / numPoints, i = 0 .. numPoints - 1, from DC
 *                     up to, but not including, Nyquist
 * @param im           room for numPoints values: the imaginary part; must not overlap re
 * @param numPoints    number of frequencies; numPoints < 1 writes nothing */
MENSURA_EXPORT void IIRFreqResponse(IIRCoeffs coeffs, int numSections, double *re, double *im, int numPoints);

/** @} */

/** @name Analog prototypes
 * @{ */

/** The low-pass prototype of a request.
 * The product of all its sections falls to 0.7071 of its DC magnitude at 1 rad/s, found on a grid of 1/512 rad/s of the
 * unscaled prototype.  Where the magnitude falls steeply, or reaches 0.7071 among the first points, it can be far lower
 * at 1 rad/s: 0.05 for elliptic with 14 poles and 1 dB, 0.22 for inverse Chebyshev with 2 poles and 120 dB.
 *
 * Butterworth is not scaled, its poles lie at 1 rad/s; as pairs count twice, its product is below 0.7071 there.
 *
 * One pole gives 1 / (s + 1) whatever the family; an unknown family gives no section.  NaN settings are not clamped. */
MENSURA_EXPORT LowPassProto CalcLowPassProtoCoeff(ProtoSpec spec);

/** The sections of a list of roots, most damped first.
 * Each root with a negative real part gives c2 s^2 + c1 s + c0 (a complex root the quadratic of its pair, a real one
 * c2 = 0), and so does each root on the imaginary axis except 0.  Sorts and edits roots: of roots closer than 0.001 in
 * both parts only the first counts; a root with a NaN gives no section.
 * Returns the number of sections written to c2, c1 and c0, at most 50; count < 1 gives 0. */
MENSURA_EXPORT int GetFilterCoeff(int count, CplxD *roots, double *c2, double *c1, double *c0);

/** Sorts roots by real part, or by |im| when the first root lies on the imaginary axis.
 * Before that, a part that is a thousand times smaller than the other one becomes 0.  Equal keys come in the order that
 * the heap sort leaves them in.  Counts outside 1 .. 99 touch nothing. */
MENSURA_EXPORT void SortRootsByZeta(CplxD *roots, int count, int ascending);

/** Permutes count positions in keys so that keys[index[i]] ascend, or descend for ascending = 0.
 * index[0 .. count-1] holds the positions before and after.  A heap sort; equal keys do not keep their order.
 * Returns 1, or 0 for count < 2 with nothing to do. */
MENSURA_EXPORT int HeapIndexSort(double *keys, int *index, int count, int ascending);

/** Moves the corner of a cascade of count analog sections, 0 to 50, to 1 rad/s.
 * The frequency is scaled by 1 / w, w being the first of i / 512 rad/s, i = 1, 2, ..., 5999, at which the magnitude is
 * below 0.7071 of DC, or the last of them if there is none. */
MENSURA_EXPORT void SetCornerFreq(int count, double *den2, double *den1, double *den0, double *num2, double *num1,
                                  double *num0);

/** The product of count quadratics c2 s^2 + c1 s + c0, by ascending power.
 * poly[0 .. 2 count] receives it.  Returns the index of the highest coefficient other than 0, -1 when there is none,
 * and -1 with nothing changed when count is outside 1 .. 50. */
MENSURA_EXPORT int RebuildPoly(int count, double *poly, double *c2, double *c1, double *c0);

/** @} */

/** @name Prototype families
 * Each function writes its poles (families with stop-band zeros: those too) into arrays of 50, the members of a pair
 * next to each other, and returns the number of poles.  n < 1 writes nothing and returns 0, and so does an n whose
 * roots exceed 50.  The families that factor a polynomial return what FindRoots returns; those marked 2n also list the
 * mirrored poles of the right half-plane.
 * @{ */

/** The n poles of a Butterworth filter, on the unit circle at angles (n + 1 + 2i) pi / (2n). */
MENSURA_EXPORT int ButterworthPoly(int n, CplxD *roots);

/** The n poles of a Chebyshev filter.
 * With t = (2i + 1) pi / (2n) and the ripple in dB they are
 *
 *     -sinh a sin t + j cosh a cos t,  a = asinh(1 / eps) / n,  eps = sqrt(10^(ripple / 10) - 1)
 *
 * where eps is clamped to 1e-5 .. 0.996, a ripple of 3 dB. */
MENSURA_EXPORT int ChebyshevPoly(double ripple, int n, CplxD *roots);

/** The 2n roots of the Taylor polynomial of exp(-s^2) of degree 2n. */
MENSURA_EXPORT int GaussianPoly(int n, CplxD *roots);

/** The 2n roots of the Adjustable family's polynomial, imaginary parts stretched by 1.1.
 * The polynomial is
 *
 *     sum_m (-1)^m (m!)^g s^(2m),  m = 0 .. n,  g = gamma, or 2 gamma above 0
 */
MENSURA_EXPORT int AdjustablePoly(double gamma, int n, CplxD *roots);

/** The n roots of the reverse Bessel polynomial of degree n. */
MENSURA_EXPORT int BesselPoly(int n, CplxD *roots);

/** The 2n roots of 1 + 0.1 L_n(-s^2), L_n being Papoulis' optimum polynomial (Proc IRE 46:606, 1958).
 * Above n = 20, L_n counts as 0. */
MENSURA_EXPORT int PapoulisPoly(int n, CplxD *roots);

/** The 2n poles of an inverse Chebyshev filter, and its zeros.
 * The poles are the reciprocals of the roots of
 *
 *     1 + eps^2 T_n(j s)^2,  eps^2 = 1 / (10^(stopBandDb / 10) - 1)
 *
 * The zeros are j / cos((2i - 1) pi / (2n)) and their conjugates, each twice, their number in *zeroCount. */
MENSURA_EXPORT int InvChebyPoly(double stopBandDb, int n, CplxD *poles, CplxD *zeros, int *zeroCount);

/** The n poles and 2 floor(n / 2) zeros of an elliptic filter.
 * The modulus that meets stopBandDb is searched for in at most 15 secant steps, to 0.1 dB; ripple is clamped to
 * 0.001 .. 1 dB.  The number of zeros goes to *zeroCount.
 * Orfanidis SJ: Lecture Notes on Elliptic Filter Design (2006) has the Landen recursions. */
MENSURA_EXPORT int EllipticPoly(double ripple, double stopBandDb, int n, CplxD *poles, CplxD *zeros, int *zeroCount);

/** The factorial k!, exact up to 22; k < 1 gives 1. */
MENSURA_EXPORT double Factorial(int k);

/** Reverses a polynomial, divides the rest by the new poly[0] unless that is 0, and sets poly[0] to 1.
 * Its coefficients are poly[0 .. degree].  degree < 0 touches nothing. */
MENSURA_EXPORT void ReverseCoeff(double *poly, int degree);

/** @} */

#ifdef __cplusplus
}
#endif

/** @} */

#endif
