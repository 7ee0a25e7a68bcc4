/* Compiled as C11 and as C++17.  The numbers are written out: a record, capacity or code that changes breaks every
 * program that was built before, whatever the headers then say.  mensura.abi holds the place of each field. */
#include <assert.h>
#include <mensura/mensura.h>

#define HOLDS(condition) static_assert(condition, #condition)

HOLDS(sizeof(CplxD) == 16 && sizeof(ProtoSpec) == 32 && sizeof(IIRDesignSpec) == 64 && sizeof(IIRCoeffs) == 4008);
HOLDS(sizeof(TIIRFilter) == 5680 && sizeof(TIIRFilterBank) == 56808 && sizeof(LowPassProto) == 2408);
HOLDS(sizeof(RMATRIX) == 80008 && sizeof(Matrix) == 16 && sizeof(KalmanFilter) == 1280136);
HOLDS(sizeof(CentralDiffOnline) == 32 && sizeof(AmplitudeLimitOnline) == 24 && sizeof(MovingAverageOnline) == 16016);
HOLDS(sizeof(MovingAverageBank) == 160168 && sizeof(LimitAverageOnline) == 16040);

HOLDS(sizeof(in) == 120);
HOLDS(RMATRIX_CAPACITY == 100 && MOVING_AVERAGE_CAPACITY == 2000 && MOVING_AVERAGE_CHANNELS == 10);
HOLDS(MAX_IIR_SECTIONS == 50);
HOLDS(ptLowPass == 0 && ptHighPass == 1 && ptBandPass == 2 && ptNotch == 3 && ptAllPass == 4);
HOLDS(pfButterworth == 0 && pfGaussian == 1 && pfBessel == 2 && pfAdjustable == 3);
HOLDS(pfChebyshev == 4 && pfInverseChebyshev == 5 && pfPapoulis == 6 && pfElliptic == 7);
HOLDS(wkNone == 0 && wkRectangle == 1 && wkKaiser == 2 && wkSinc == 3 && wkHanning == 4 && wkHamming == 5);
HOLDS(wkBlackman == 6 && wkFlatTop == 7 && wkBlackmanHarris == 8 && wkBlackmanNuttall == 9 && wkNuttall == 10);
HOLDS(wkKaiserBessel == 11 && wkTriangle == 12 && wkGauss == 13 && wkSine == 14);
