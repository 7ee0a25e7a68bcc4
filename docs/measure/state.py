"""docs/state.md: what remembers what, the first sample, and what one NaN leaves behind."""

import math

from binding import (AmplitudeLimitOnline, CentralDiffOnline, KalmanFilter, MovingAverageOnline, SMOOTHERS, TIIRFilter,
                     doubles)
from cascade import ALL_PASS, BAND_PASS, HIGH_PASS, LOW_PASS, NOTCH
from figures import fixed, require
from requested import Requests

TYPES = {"low-pass, all-pass": (LOW_PASS, ALL_PASS), "high-pass": (HIGH_PASS,), "band-pass": (BAND_PASS,), "notch": (NOTCH,)}
SAMPLES, NEAR = 1000, 0.01
RECORD, NAN_AT, LENGTH = 64, 30, 8  # a record with one NaN; the length of a moving average


def nan_count(values):
    return sum(map(math.isnan, values))


def with_nan(at=NAN_AT):
    x = doubles([math.sin(0.3 * i) for i in range(RECORD)])
    x[at] = math.nan
    return x


class States:
    def __init__(self, library):
        self._library = library

    def default(self, kind):
        """40 Hz at 360 Hz."""
        filter = TIIRFilter()
        self._library.initTIIRFilter(filter, kind, 40.0, 360.0)
        return filter

    def run(self, kind, x):
        filter = self.default(kind)
        return [self._library.IIRFilter(filter, value) for value in x]

    def first_samples(self):
        """Rows by type: the first output for a constant 1, where it settles, and how long that takes."""
        for name, kinds in TYPES.items():
            for kind in kinds:
                y = self.run(kind, [1.0] * SAMPLES)
                end = round(y[-1])
                far = [i for i, value in enumerate(y) if abs(value - end) > NEAR]
                after = f"{far[-1] + 1} samples" if far else "at once"
                first = f"{float(fixed(y[0], 3)):g}"
                if max(y) > max(1.01, y[0]):
                    first += f" (up to {fixed(max(y), 3)})"
                row = [name, first, end, after]
                if kind == kinds[0]:
                    yield row
                    shown = row
                require(row == shown, f"{name} alike")

    def require_steady(self):
        """All types start settled from the steady state."""
        requests = Requests(self._library)
        for kind in (LOW_PASS, HIGH_PASS, BAND_PASS, NOTCH, ALL_PASS):
            made = requests.design(kind, 40.0, 60.0, rate=360.0)
            y = made.run([1.0] * SAMPLES, made.steady_state(1.0))
            end = 0.0 if kind in (HIGH_PASS, BAND_PASS) else 1.0
            require(max(abs(value - end) for value in y) < 1e-12, "the steady state is steady")
            spoilt = made.run(with_nan())
            require(nan_count(spoilt) == RECORD - NAN_AT, "mensura_sos_filter: all that follow")
            require(nan_count(made.both_ways(with_nan())) == RECORD, "mensura_sos_filtfilt: the whole record")

    # ---- One NaN ----

    def spoilt_stream(self, record, start, step, *settings):
        getattr(self._library, start)(record, *settings)
        y = [getattr(self._library, step)(record, value) for value in with_nan()]
        return nan_count(y)

    def spoilt_record(self, call, at=NAN_AT, *settings):
        y = doubles(RECORD)
        getattr(self._library, call)(with_nan(at), y, RECORD, *settings)
        return nan_count(y)

    def spoilt(self):
        """How many outputs of a stream or record one NaN spoils."""
        return {
            "derivative": self.spoilt_record("central_difference", NAN_AT, 1.0),
            "derivative_stream":
                self.spoilt_stream(CentralDiffOnline(), "init_central_difference_online", "central_difference_online", 1.0),
            "average":
                self.spoilt_stream(MovingAverageOnline(), "init_move_average_filter_online", "move_average_filter_online", LENGTH),
            "limiter": self.spoilt_stream(
                AmplitudeLimitOnline(), "init_amlitude_limit_filer_online", "amlitude_limit_filer_online", 10.0),
        }

    def smoothers(self):
        """A smoother of window w: one NaN spoils w values inside a record, and at most 3 w / 2 near its edges."""
        for call in SMOOTHERS:
            window = int(call.removeprefix("linear").removeprefix("quadratic").removeprefix("cubic").removeprefix("Smooth"))
            require(self.spoilt_record(call) == window, f"{call}: w values")
            most = max(self.spoilt_record(call, at) for at in range(RECORD))
            require(window < most <= 3 * window / 2, f"{call}: more near an edge, up to 3 w / 2")

    def require_words(self):
        """Checks what the tables and lists say without a number."""
        library, x = self._library, with_nan()
        require(nan_count(self.run(LOW_PASS, x)) == RECORD - NAN_AT, "IIRFilter: all that follow")
        filter, y, z = self.default(LOW_PASS), doubles(RECORD), doubles(RECORD)
        library.FilterWithIIR(x, y, RECORD, filter.Coeffs)
        require(nan_count(y) == RECORD - NAN_AT, "FilterWithIIR: all that follow in the block")
        library.FilterWithIIR(doubles([1.0] * RECORD), y, RECORD, filter.Coeffs)
        require(nan_count(y) == 0, "FilterWithIIR: the next call is whole")
        library.IIRFilterZeroPhase(filter, x, y, RECORD)
        require(nan_count(y) == RECORD, "IIRFilterZeroPhase: the whole record")
        for transform in ("FFT", "DFT"):
            re, im = with_nan(), doubles(RECORD)
            getattr(library, transform)(re, im, RECORD, 0)
            require(nan_count(re) == nan_count(im) == RECORD, f"{transform}: all bins")
        library.RealSigDFT(x, y, z, RECORD)
        require(nan_count(y) >= RECORD // 2 and math.isnan(library.Goertzel(x, RECORD, 0.3)), "RealSigDFT, Goertzel: all bins")
        self.smoothers()
        self.require_steady()
        self.require_starts()
        self.require_zero_phase_records(doubles([math.sin(0.2 * i) for i in range(RECORD)]))
        self.require_kalman()

    def require_starts(self):
        library, slope, limiter, mean = self._library, CentralDiffOnline(), AmplitudeLimitOnline(), MovingAverageOnline()
        library.init_central_difference_online(slope, 1.0)
        y = [library.central_difference_online(slope, value) for value in (1.0, 2.0, 4.0)]
        require(y == [0.0, 0.0, 1.5], "CentralDiffOnline starts with two outputs of 0")
        library.init_amlitude_limit_filer_online(limiter, 1.0)
        y = [library.amlitude_limit_filer_online(limiter, 10.0 * i) for i in range(7)]
        require(y == [0.0, 10.0, 20.0, 30.0, 40.0, 50.0, 50.0], "AmplitudeLimitOnline: six samples unchecked")
        library.init_move_average_filter_online(mean, 4)
        y = [library.move_average_filter_online(mean, value) for value in (1.0, 3.0, 5.0)]
        require(y == [1.0, 2.0, 3.0], "MovingAverageOnline starts with the mean of the samples so far")

    def require_zero_phase_records(self, x):
        library, filter = self._library, self.default(LOW_PASS)
        results = []
        for primed in (0, 0, None):  # None: as the record before left it
            y = doubles(RECORD)
            filter.Primed = filter.Primed if primed is None else primed
            library.IIRFilterZeroPhase(filter, x, y, RECORD)
            results.append(y)
        require(results[0] == results[1] != results[2], "Primed = 0 before each record: the same bits, otherwise not")

    def require_kalman(self):
        library, kf = self._library, KalmanFilter()
        a, c, q, r, p = (doubles(size) for size in (9, 3, 9, 1, 9))
        library.getKalmanFilterA(a, 3, 0.1), library.getKalmanFilterC(c, 1)
        library.getKalmanFilterQ(q, 3, 0.1, 0, 0, 0.1, 0, 0.1)
        library.getKalmanFilterR(r, 1, 1.0), library.getKalmanFilterP(p, 3, 1.0)
        library.initKalmanFilter_d(kf, a, c, q, r, p, None, 1, 3)
        state = doubles(3)
        for z in (1.0, math.nan, 1.0, 1.0):
            library.KalmanFilter_update_d(kf, doubles([z]), state)
        require(nan_count(state) == 3, "KalmanFilter_update: the state, for good")
        library.resetKalmanFilter(kf)
        library.KalmanFilter_update_d(kf, doubles([1.0]), state)
        require(nan_count(state) == 0, "resetKalmanFilter cures it")


def names(library):
    states = States(library)
    states.require_words()
    spoilt = states.spoilt()
    require(spoilt["average"] == LENGTH, "a moving average of length L spoils L outputs")
    return {"first_samples": list(states.first_samples()), "spoilt": spoilt, "near": NEAR}
