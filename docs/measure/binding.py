"""The library through ctypes: the records and calls that the Python programs of this project use.

Arrays are anything that lends its memory: array.array, arrays of ctypes, NumPy arrays.
"""

import ctypes
import pathlib
import sys
from array import array

SECTIONS = 50  # MAX_IIR_SECTIONS
CAPACITY = 100  # RMATRIX_CAPACITY

Double, Int, Size, Pointer = ctypes.c_double, ctypes.c_int, ctypes.c_ssize_t, ctypes.POINTER
Array = Double * SECTIONS
OdeFunction = ctypes.CFUNCTYPE(Int, Double, Pointer(Double), ctypes.c_void_p, Pointer(Double))


def pointer_to(*formats):
    """An argument type: the address of a writable array without gaps, its items in one of these buffer formats."""

    class ArrayPointer(ctypes.c_void_p):
        @classmethod
        def from_param(cls, lender):
            if lender is None:
                return None
            view = memoryview(lender)
            if view.format not in formats or not view.c_contiguous:
                raise TypeError(f"an array of {view.format}, expected {formats[0]} without gaps")
            return ctypes.byref(ctypes.c_char.from_buffer(lender)) if view.nbytes else None

    return ArrayPointer


class CplxD(ctypes.Structure):
    _fields_ = [("re", Double), ("im", Double)]


Doubles = pointer_to("d", "<d")
LongDoubles = pointer_to("g", "<g")
Complexes = pointer_to("Zd", memoryview(CplxD()).format)  # CplxD, or complex128 of NumPy


class ProtoSpec(ctypes.Structure):
    _fields_ = [("Family", Int), ("NumPoles", Int), ("Ripple", Double), ("StopBandDb", Double), ("Gamma", Double)]


class IIRDesignSpec(ctypes.Structure):
    _fields_ = [
        ("PassType", Int),
        ("NormCutoff", Double),
        ("NormBandwidth", Double),
        ("GainDb", Double),
        ("Proto", ProtoSpec),
    ]


class IIRCoeffs(ctypes.Structure):
    _fields_ = [(name, Array) for name in ("a0", "a1", "a2", "a3", "a4", "b0", "b1", "b2", "b3", "b4")]
    _fields_ += [("NumSections", Int)]


class TIIRFilter(ctypes.Structure):
    _fields_ = [("Spec", IIRDesignSpec), ("Coeffs", IIRCoeffs)]
    _fields_ += [(name, Array) for name in ("RegX1", "RegX2", "RegY1", "RegY2")]
    _fields_ += [("Primed", Int)]


class TIIRFilterBank(ctypes.Structure):
    _fields_ = [("Filters", TIIRFilter * 10), ("Count", Int)]


class LowPassProto(ctypes.Structure):
    _fields_ = [(name, Array) for name in ("Num2", "Num1", "Num0", "Den2", "Den1", "Den0")] + [("SectionCount", Int)]


class RMATRIX(ctypes.Structure):
    _fields_ = [("data", Double * CAPACITY**2), ("rows", Int), ("cols", Int)]

    def to_rows(self):
        return [self.data[row * CAPACITY : row * CAPACITY + self.cols] for row in range(self.rows)]


class Matrix(ctypes.Structure):
    _fields_ = [("m", Int), ("n", Int), ("v", Pointer(Pointer(Double)))]


class KalmanFilter(ctypes.Structure):
    _fields_ = [(name, RMATRIX) for name in ("A", "C", "Q", "R", "P", "K", "Ident", "PInit", "xInit")]
    _fields_ += [("MeasCount", Int), ("StateCount", Int)]
    _fields_ += [(name, RMATRIX) for name in ("x", "xPred", "ATrans", "CTrans", "y", "Work1", "Work2")]


class CentralDiffOnline(ctypes.Structure):
    _fields_ = [("Step", Double), ("Prev1", Double), ("Prev2", Double), ("Count", Int)]


class AmplitudeLimitOnline(ctypes.Structure):
    _fields_ = [("Limit", Double), ("Last", Double), ("Count", Int)]


class MovingAverageOnline(ctypes.Structure):
    _fields_ = [("Length", Int), ("Buffer", Double * 2000), ("Pos", Int), ("Full", Int)]


class MovingAverageBank(ctypes.Structure):
    _fields_ = [("Filters", MovingAverageOnline * 10), ("Count", Int)]


class LimitAverageOnline(ctypes.Structure):
    _fields_ = [("Limiter", AmplitudeLimitOnline), ("Average", MovingAverageOnline)]


class SosRequest(ctypes.Structure):
    """mensura_sos_request."""

    _fields_ = [(name, Int) for name in ("size", "pass_type", "family", "poles", "passes", "band")]
    _fields_ += [("rate", Double), ("edge", Double * 2)]
    _fields_ += [(name, Double) for name in ("level_db", "ripple_db", "stop_db", "gamma", "gain_db")]


class SosRequirement(ctypes.Structure):
    """mensura_sos_requirement."""

    _fields_ = [(name, Int) for name in ("size", "pass_type", "passes", "reserved")]
    _fields_ += [("rate", Double), ("pass_edge", Double * 2), ("stop_edge", Double * 2)]
    _fields_ += [("loss_db", Double), ("attenuation_db", Double)]


UNARY, BINARY = ("CplxDCos", "CplxDSin", "CplxDTan"), ("CplxDAdd", "CplxDSub", "CplxDMult", "CplxDDivision")
SOS = (Doubles, Int)  # 6 values a section, sections
SMOOTHERS = [f"linearSmooth{w}" for w in (3, 5, 7, 9, 11)]
SMOOTHERS += [f"{d}Smooth{w}" for w in (5, 7) for d in ("quadratic", "cubic")]
CALLS = (  # result, name, arguments
    *((CplxD, name, CplxD) for name in UNARY),
    *((CplxD, name, CplxD, CplxD) for name in BINARY),
    *((CplxD, name, CplxD, Double) for name in ("CplxDMult_coef", "CplxDPow")),
    (Double, "CplxDCabs", CplxD),
    (None, "initTIIRFilter", Pointer(TIIRFilter), Int, Double, Double),
    (Double, "IIRFilter", Pointer(TIIRFilter), Double),
    (IIRCoeffs, "CalcIIRFilterCoeff", IIRDesignSpec),
    (LowPassProto, "CalcLowPassProtoCoeff", ProtoSpec),
    (None, "FilterWithIIR", Doubles, Doubles, Int, IIRCoeffs),
    (None, "IIRFilterZeroPhase", Pointer(TIIRFilter), Doubles, Doubles, Int),
    (None, "dataZeroPhaseFilter", Doubles, Int, Double, Double, Double),
    (None, "IIRFreqResponse", IIRCoeffs, Int, Doubles, Doubles, Int),
    *((Int, name, Int, Complexes) for name in ("ButterworthPoly", "GaussianPoly", "BesselPoly", "PapoulisPoly")),
    *((Int, name, Double, Int, Complexes) for name in ("ChebyshevPoly", "AdjustablePoly")),
    (Int, "InvChebyPoly", Double, Int, Complexes, Complexes, Pointer(Int)),
    (Int, "EllipticPoly", Double, Double, Int, Complexes, Complexes, Pointer(Int)),
    *((None, name, Doubles, Doubles, Int, Int) for name in ("FFT", "DFT")),
    (None, "RealSigDFT", Doubles, Doubles, Doubles, Int),
    *((Double, name, Doubles, Int, Double) for name in ("SingleFreqDFT", "Goertzel")),
    (None, "WindowData", Doubles, Int, Int, Double, Double, Int),
    (Int, "FindRoots", Int, Doubles, Complexes),
    (Int, "QuadCubicRoots", LongDoubles, Int, LongDoubles, LongDoubles),
    (ctypes.c_void_p, "setRMATRIX_ptr", Doubles, Int, Int, Pointer(RMATRIX)),
    (ctypes.c_void_p, "rmatrix_inverse_ptr", Pointer(RMATRIX), Pointer(RMATRIX)),
    (Pointer(Matrix), "matrix_new", Int, Int),
    (None, "matrix_delete", Pointer(Matrix)),
    (None, "householder", Pointer(Matrix), Pointer(Pointer(Matrix)), Pointer(Pointer(Matrix))),
    (None, "initKalmanFilter_d", Pointer(KalmanFilter), *[Doubles] * 6, Int, Int),
    (None, "resetKalmanFilter", Pointer(KalmanFilter)),
    (ctypes.c_void_p, "KalmanFilter_update_d", Pointer(KalmanFilter), Doubles, Doubles),
    (Int, "isEmptyRMATRIX", Pointer(RMATRIX)),
    (ctypes.c_void_p, "getKalmanFilterA", Doubles, Int, Double),
    (ctypes.c_void_p, "getKalmanFilterC", Doubles, Int),
    (ctypes.c_void_p, "getKalmanFilterQ", Doubles, Int, *[Double] * 6),
    (ctypes.c_void_p, "getKalmanFilterR", Doubles, Int, Double),
    (ctypes.c_void_p, "getKalmanFilterP", Doubles, Int, Double),
    (Int, "rkf45", *[Double] * 4, OdeFunction, Doubles, Int, ctypes.c_void_p, Doubles),
    (Int, "rkf452", *[Double] * 3, OdeFunction, Doubles, Int, ctypes.c_void_p, Doubles),
    *((None, name, Doubles, Doubles, Int) for name in SMOOTHERS),
    (None, "central_difference", Doubles, Doubles, Int, Double),
    (None, "init_central_difference_online", Pointer(CentralDiffOnline), Double),
    (Double, "central_difference_online", Pointer(CentralDiffOnline), Double),
    (None, "init_amlitude_limit_filer_online", Pointer(AmplitudeLimitOnline), Double),
    (Double, "amlitude_limit_filer_online", Pointer(AmplitudeLimitOnline), Double),
    (None, "init_amlitude_limit_move_average_filter_online", Pointer(LimitAverageOnline), Int, Double),
    (Double, "amlitude_limit_move_average_filter_online", Pointer(LimitAverageOnline), Double),
    (None, "init_move_average_filter_online", Pointer(MovingAverageOnline), Int),
    (Double, "move_average_filter_online", Pointer(MovingAverageOnline), Double),
    (ctypes.c_char_p, "mensura_sos_message", Int),
    (Int, "mensura_sos_default_request", Pointer(SosRequest), Int),
    (Int, "mensura_sos_design", Pointer(SosRequest), Doubles, Int),
    (Int, "mensura_sos_order", Pointer(SosRequirement), Int, Double, Pointer(SosRequest), Int),
    (Int, "mensura_sos_filter", *SOS, Doubles, Doubles, Size, Doubles, Size, Size),
    (Int, "mensura_sos_filter_channels", *SOS, Doubles, Int, Doubles, Size, Size, Doubles, Size, Size, Size),
    (Int, "mensura_sos_steady_state", *SOS, Double, Doubles),
    (Int, "mensura_sos_extension", *SOS),
    (Int, "mensura_sos_filtfilt", *SOS, Int, Size, Doubles, Size, Doubles, Size, Size, Doubles),
    (Int, "mensura_sos_response", *SOS, Double, Doubles, Doubles, Doubles, Size),
    (Int, "mensura_sos_group_delay", *SOS, Double, Doubles, Doubles, Size),
    (Int, "mensura_sos_crossings", *SOS, Double, Double, Doubles, Int),
    (Int, "mensura_sos_extremes", *SOS, *[Double] * 3, Pointer(Double), Pointer(Double)),
    (Int, "mensura_sos_pole_radius", *SOS, Pointer(Double)),
    (Int, "mensura_sos_step_response", *SOS, Doubles, Size),
    (Int, "mensura_sos_impulse_response", *SOS, Doubles, Size),
    (Int, "mensura_sos_step_figures", *SOS, Double, Size, Pointer(Double), Pointer(Size)),
)


def declare(library, calls):
    """The library, its calls with the result and argument types that ctypes has to know."""
    for result, name, *arguments in calls:
        getattr(library, name).argtypes = arguments
        getattr(library, name).restype = result
    return library


def load(path):
    """The library with the argument and result types that ctypes has to know."""
    try:
        library = ctypes.CDLL(str(path))
    except OSError as error:
        sys.exit(f"{error}\nbuild it first: cmake --preset release && cmake --build --preset release")
    return declare(library, CALLS)


def companion(library):
    """The path of the program `mensura` of the same build."""
    program = pathlib.Path(library._name).resolve().parent / "cli/mensura"
    if not program.exists():
        raise ModuleNotFoundError(f"no {program}", name="mensura")
    return program


class Refused(ValueError):
    """A call of mensura/sos.h that returned a negative code."""

    def __init__(self, code, message):
        super().__init__(message)
        self.code = code


def checked(library, result):
    """The result of a call of mensura/sos.h."""
    if result < 0:
        raise Refused(result, library.mensura_sos_message(result).decode())
    return result


def measuring(library):
    """The C++ of docs/measure, which the build puts beside the library."""
    return ctypes.CDLL(str(pathlib.Path(library._name).resolve().parent / "libmensura_pages.so"))


def doubles(values):
    """An array of doubles: `doubles(5)` of five zeros, or of the values given."""
    return array("d", bytes(8 * values) if isinstance(values, int) else values)


def sections_of(coeffs):
    """The cascade as SciPy has it: b0 b1 b2 1 a1 a2 a row."""
    c = coeffs
    return [
        [c.a0[k] * c.b0[k], c.a0[k] * c.b1[k], c.a0[k] * c.b2[k], 1.0, c.a1[k], c.a2[k]] for k in range(c.NumSections)
    ]
