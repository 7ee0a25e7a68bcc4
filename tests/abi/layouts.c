/* Compiled as C11 and as C++17.  The numbers are written out: a field moved, widened or added breaks every program that
 * was built before, whatever the headers then say. */
#include <assert.h>
#include <mensura/mensura.h>
#include <stddef.h>

#define HOLDS(condition) static_assert(condition, #condition)
#define SIZE(record, bytes) (sizeof(record) == (bytes))
#define AT(record, field, offset) (offsetof(record, field) == (offset))
#define AT2(record, f, f_offset, g, g_offset) (AT(record, f, f_offset) && AT(record, g, g_offset))
#define AT4(record, f, f_offset, g, g_offset, h, h_offset, i, i_offset) \
    (AT2(record, f, f_offset, g, g_offset) && AT2(record, h, h_offset, i, i_offset))

HOLDS(SIZE(CplxD, 16) && AT2(CplxD, re, 0, im, 8));
HOLDS(SIZE(ProtoSpec, 32) && AT4(ProtoSpec, Family, 0, NumPoles, 4, Ripple, 8, StopBandDb, 16));
HOLDS(AT(ProtoSpec, Gamma, 24) && SIZE(IIRDesignSpec, 64) && AT(IIRDesignSpec, PassType, 0));
HOLDS(AT4(IIRDesignSpec, NormCutoff, 8, NormBandwidth, 16, GainDb, 24, Proto, 32));

HOLDS(AT4(IIRCoeffs, a0, 0, a1, 400, a2, 800, a3, 1200) && AT(IIRCoeffs, a4, 1600));
HOLDS(AT4(IIRCoeffs, b0, 2000, b1, 2400, b2, 2800, b3, 3200) && AT(IIRCoeffs, b4, 3600));
HOLDS(SIZE(IIRCoeffs, 4008) && AT(IIRCoeffs, NumSections, 4000) && SIZE(TIIRFilter, 5680));
HOLDS(AT4(TIIRFilter, Spec, 0, Coeffs, 64, RegX1, 4072, RegX2, 4472));
HOLDS(AT2(TIIRFilter, RegY1, 4872, RegY2, 5272) && AT(TIIRFilter, Primed, 5672));
HOLDS(SIZE(TIIRFilterBank, 56808) && AT2(TIIRFilterBank, Filters, 0, Count, 56800));
HOLDS(AT4(LowPassProto, Num2, 0, Num1, 400, Num0, 800, Den2, 1200) && AT2(LowPassProto, Den1, 1600, Den0, 2000));
HOLDS(SIZE(LowPassProto, 2408) && AT(LowPassProto, SectionCount, 2400));

HOLDS(SIZE(RMATRIX, 80008) && AT2(RMATRIX, data, 0, rows, 80000) && AT(RMATRIX, cols, 80004));
HOLDS(SIZE(Matrix, 16) && AT2(Matrix, m, 0, n, 4) && AT(Matrix, v, 8));
HOLDS(AT4(KalmanFilter, A, 0, C, 80008, Q, 160016, R, 240024) && AT2(KalmanFilter, P, 320032, K, 400040));
HOLDS(AT4(KalmanFilter, Ident, 480048, PInit, 560056, xInit, 640064, MeasCount, 720072));
HOLDS(AT4(KalmanFilter, StateCount, 720076, x, 720080, xPred, 800088, ATrans, 880096));
HOLDS(AT4(KalmanFilter, CTrans, 960104, y, 1040112, Work1, 1120120, Work2, 1200128) && SIZE(KalmanFilter, 1280136));

HOLDS(SIZE(CentralDiffOnline, 32) && AT4(CentralDiffOnline, Step, 0, Prev1, 8, Prev2, 16, Count, 24));
HOLDS(SIZE(AmplitudeLimitOnline, 24) && AT2(AmplitudeLimitOnline, Limit, 0, Last, 8));
HOLDS(AT(AmplitudeLimitOnline, Count, 16) && SIZE(MovingAverageOnline, 16016));
HOLDS(AT4(MovingAverageOnline, Length, 0, Buffer, 8, Pos, 16008, Full, 16012));
HOLDS(SIZE(MovingAverageBank, 160168) && AT2(MovingAverageBank, Filters, 0, Count, 160160));
HOLDS(SIZE(LimitAverageOnline, 16040) && AT2(LimitAverageOnline, Limiter, 0, Average, 24));

HOLDS(SIZE(mensura_sos_request, 88) && AT2(mensura_sos_request, size, 0, pass_type, 4));
HOLDS(AT4(mensura_sos_request, family, 8, poles, 12, passes, 16, band, 20) && AT(mensura_sos_request, rate, 24));
HOLDS(AT4(mensura_sos_request, edge, 32, level_db, 48, ripple_db, 56, stop_db, 64));
HOLDS(AT2(mensura_sos_request, gamma, 72, gain_db, 80));
HOLDS(SIZE(mensura_sos_requirement, 72) && AT4(mensura_sos_requirement, size, 0, pass_type, 4, passes, 8, rate, 16));
HOLDS(AT4(mensura_sos_requirement, pass_edge, 24, stop_edge, 40, loss_db, 56, attenuation_db, 64));

HOLDS(sizeof(in) == 120);
HOLDS(RMATRIX_CAPACITY == 100 && MOVING_AVERAGE_CAPACITY == 2000 && MOVING_AVERAGE_CHANNELS == 10);
HOLDS(MAX_IIR_SECTIONS == 50);
HOLDS(ptLowPass == 0 && ptHighPass == 1 && ptBandPass == 2 && ptNotch == 3 && ptAllPass == 4);
HOLDS(pfButterworth == 0 && pfGaussian == 1 && pfBessel == 2 && pfAdjustable == 3);
HOLDS(pfChebyshev == 4 && pfInverseChebyshev == 5 && pfPapoulis == 6 && pfElliptic == 7);
HOLDS(wkNone == 0 && wkRectangle == 1 && wkKaiser == 2 && wkSinc == 3 && wkHanning == 4 && wkHamming == 5);
HOLDS(wkBlackman == 6 && wkFlatTop == 7 && wkBlackmanHarris == 8 && wkBlackmanNuttall == 9 && wkNuttall == 10);
HOLDS(wkKaiserBessel == 11 && wkTriangle == 12 && wkGauss == 13 && wkSine == 14);
HOLDS(MENSURA_SOS_MAX_SECTIONS == 20 && MENSURA_SOS_TWO_EDGES == 0 && MENSURA_SOS_CENTRE == 1);
HOLDS(MENSURA_SOS_ENDS_NONE == 0 && MENSURA_SOS_ENDS_ODD == 1 && MENSURA_SOS_ENDS_EVEN == 2);
HOLDS(MENSURA_SOS_ENDS_CONSTANT == 3 && MENSURA_SOS_NULL == -1 && MENSURA_SOS_SIZE == -2 && MENSURA_SOS_TYPE == -3);
HOLDS(MENSURA_SOS_FAMILY == -4 && MENSURA_SOS_POLES == -5 && MENSURA_SOS_PASSES == -6 && MENSURA_SOS_RATE == -7);
HOLDS(MENSURA_SOS_FREQUENCY == -8 && MENSURA_SOS_EDGES == -9 && MENSURA_SOS_LEVEL == -10);
HOLDS(MENSURA_SOS_RIPPLE == -11 && MENSURA_SOS_STOP_BAND == -12 && MENSURA_SOS_GAMMA == -13);
HOLDS(MENSURA_SOS_GAIN == -14 && MENSURA_SOS_CAPACITY == -15 && MENSURA_SOS_COUNT == -16);
HOLDS(MENSURA_SOS_SECTION == -17 && MENSURA_SOS_UNREACHABLE == -18 && MENSURA_SOS_PRECISION == -19);
HOLDS(MENSURA_SOS_STEADY_STATE == -20 && MENSURA_SOS_ENDS == -21 && MENSURA_SOS_MEMORY == -22);
HOLDS(MENSURA_SOS_UNSTABLE == -23 && MENSURA_SOS_UNSETTLED == -24);
