/* Compiled as C11 and as C++17.  The numbers are written out: a field moved, widened or added breaks every program that
 * was built before, whatever the headers then say. */
#include <assert.h>
#include <mensura/mensura.h>
#include <stddef.h>

#define HOLDS(condition) static_assert(condition, #condition)
#define AT(record, field, offset) (offsetof(record, field) == (offset))

HOLDS(sizeof(CplxD) == 16 && AT(CplxD, re, 0) && AT(CplxD, im, 8));

HOLDS(sizeof(ProtoSpec) == 32 && AT(ProtoSpec, Family, 0) && AT(ProtoSpec, NumPoles, 4));
HOLDS(AT(ProtoSpec, Ripple, 8) && AT(ProtoSpec, StopBandDb, 16) && AT(ProtoSpec, Gamma, 24));

HOLDS(sizeof(IIRDesignSpec) == 64 && AT(IIRDesignSpec, PassType, 0) && AT(IIRDesignSpec, NormCutoff, 8));
HOLDS(AT(IIRDesignSpec, NormBandwidth, 16) && AT(IIRDesignSpec, GainDb, 24) && AT(IIRDesignSpec, Proto, 32));

HOLDS(AT(IIRCoeffs, a0, 0) && AT(IIRCoeffs, a1, 400) && AT(IIRCoeffs, a2, 800));
HOLDS(AT(IIRCoeffs, a3, 1200) && AT(IIRCoeffs, a4, 1600));
HOLDS(AT(IIRCoeffs, b0, 2000) && AT(IIRCoeffs, b1, 2400) && AT(IIRCoeffs, b2, 2800));
HOLDS(AT(IIRCoeffs, b3, 3200) && AT(IIRCoeffs, b4, 3600));
HOLDS(sizeof(IIRCoeffs) == 4008 && AT(IIRCoeffs, NumSections, 4000));

HOLDS(sizeof(TIIRFilter) == 5680 && AT(TIIRFilter, Spec, 0) && AT(TIIRFilter, Coeffs, 64));
HOLDS(AT(TIIRFilter, RegX1, 4072) && AT(TIIRFilter, RegX2, 4472));
HOLDS(AT(TIIRFilter, RegY1, 4872) && AT(TIIRFilter, RegY2, 5272) && AT(TIIRFilter, Primed, 5672));

HOLDS(sizeof(TIIRFilterBank) == 56808 && AT(TIIRFilterBank, Filters, 0) && AT(TIIRFilterBank, Count, 56800));

HOLDS(AT(LowPassProto, Num2, 0) && AT(LowPassProto, Num1, 400) && AT(LowPassProto, Num0, 800));
HOLDS(AT(LowPassProto, Den2, 1200) && AT(LowPassProto, Den1, 1600) && AT(LowPassProto, Den0, 2000));
HOLDS(sizeof(LowPassProto) == 2408 && AT(LowPassProto, SectionCount, 2400));

HOLDS(sizeof(RMATRIX) == 80008 && AT(RMATRIX, data, 0) && AT(RMATRIX, rows, 80000) && AT(RMATRIX, cols, 80004));
HOLDS(sizeof(Matrix) == 16 && AT(Matrix, m, 0) && AT(Matrix, n, 4) && AT(Matrix, v, 8));

HOLDS(AT(KalmanFilter, A, 0) && AT(KalmanFilter, C, 80008) && AT(KalmanFilter, Q, 160016));
HOLDS(AT(KalmanFilter, R, 240024) && AT(KalmanFilter, P, 320032) && AT(KalmanFilter, K, 400040));
HOLDS(AT(KalmanFilter, Ident, 480048) && AT(KalmanFilter, PInit, 560056) && AT(KalmanFilter, xInit, 640064));
HOLDS(AT(KalmanFilter, MeasCount, 720072) && AT(KalmanFilter, StateCount, 720076) && AT(KalmanFilter, x, 720080));
HOLDS(AT(KalmanFilter, xPred, 800088) && AT(KalmanFilter, ATrans, 880096) && AT(KalmanFilter, CTrans, 960104));
HOLDS(AT(KalmanFilter, y, 1040112) && AT(KalmanFilter, Work1, 1120120) && AT(KalmanFilter, Work2, 1200128));
HOLDS(sizeof(KalmanFilter) == 1280136);

HOLDS(sizeof(CentralDiffOnline) == 32 && AT(CentralDiffOnline, Step, 0) && AT(CentralDiffOnline, Prev1, 8));
HOLDS(AT(CentralDiffOnline, Prev2, 16) && AT(CentralDiffOnline, Count, 24));
HOLDS(sizeof(AmplitudeLimitOnline) == 24 && AT(AmplitudeLimitOnline, Limit, 0));
HOLDS(AT(AmplitudeLimitOnline, Last, 8) && AT(AmplitudeLimitOnline, Count, 16));
HOLDS(sizeof(MovingAverageOnline) == 16016 && AT(MovingAverageOnline, Length, 0));
HOLDS(AT(MovingAverageOnline, Buffer, 8) && AT(MovingAverageOnline, Pos, 16008) &&
      AT(MovingAverageOnline, Full, 16012));
HOLDS(sizeof(MovingAverageBank) == 160168 && AT(MovingAverageBank, Filters, 0) && AT(MovingAverageBank, Count, 160160));
HOLDS(sizeof(LimitAverageOnline) == 16040 && AT(LimitAverageOnline, Limiter, 0) && AT(LimitAverageOnline, Average, 24));

HOLDS(sizeof(in) == 120);
HOLDS(RMATRIX_CAPACITY == 100 && MOVING_AVERAGE_CAPACITY == 2000 && MOVING_AVERAGE_CHANNELS == 10);
HOLDS(MAX_IIR_SECTIONS == 50);
HOLDS(ptLowPass == 0 && ptHighPass == 1 && ptBandPass == 2 && ptNotch == 3 && ptAllPass == 4);
HOLDS(pfButterworth == 0 && pfGaussian == 1 && pfBessel == 2 && pfAdjustable == 3);
HOLDS(pfChebyshev == 4 && pfInverseChebyshev == 5 && pfPapoulis == 6 && pfElliptic == 7);
HOLDS(wkNone == 0 && wkRectangle == 1 && wkKaiser == 2 && wkSinc == 3 && wkHanning == 4 && wkHamming == 5);
HOLDS(wkBlackman == 6 && wkFlatTop == 7 && wkBlackmanHarris == 8 && wkBlackmanNuttall == 9 && wkNuttall == 10);
HOLDS(wkKaiserBessel == 11 && wkTriangle == 12 && wkGauss == 13 && wkSine == 14);
