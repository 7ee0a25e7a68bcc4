"""Pictures of docs/pictures that the companion does not draw, by gnuplot: `cmake --build ... --target gallery`.

Usage: pictures.py LIBRARY FOLDER
"""

import cmath
import math
import pathlib
import random
import subprocess
import sys

sys.dont_write_bytecode = True
ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(ROOT / "bench"))  # benchmarks.py
import kalman
import ode
import spectral
from binding import companion, doubles, load
from cascade import HALF_POWER_DB, LOW_PASS, Designer
from requested import Requests

RATE, EDGE = 360.0, 40.0  # Hz
# Grey, then colours that people with any kind of colour vision can distinguish (Okabe and Ito), as the companion has them.
COLOURS = "#999999 #0072b2 #d55e00 #009e73 #cc79a7 #56b4e9 #e69f00 #000000".split()
STYLE = "set grid linetype 1 linecolor rgb '#dddddd'\n"


def draw(path, size, script, curves):
    """Draws points (x, y) that the script calls $curve0, $curve1 and so on."""
    blocks = "".join(f"$curve{i} << EOD\n" + "".join(f"{x:.6g} {y:.6g}\n" for x, y in points) + "EOD\n"
                     for i, points in enumerate(curves))
    head = f"set terminal svg size {size} font 'sans,13' background 'white'\nset output '{path}'\n"
    subprocess.run(["gnuplot", "-"], input=head + STYLE + blocks + script, text=True, check=True)


class Pictures:
    def __init__(self, library, folder):
        self._library, self._folder = library, folder
        self._designer, self._requests = Designer(library), Requests(library)
        self.families = self._designer.families

    def _made(self, family, edge=EDGE):
        return self._requests.design(LOW_PASS, edge, rate=RATE, family=family.code)

    def requested(self):
        """The -3 dB point achieved by the one requested, 6 poles: of the layer, and of the older designs."""
        frequencies = [float(f) for f in range(1, 180)]
        older = [[(f, self._designer.design(LOW_PASS, 2 * f / RATE, family.code).half_power(0, 1) * RATE / 2)
                  for f in frequencies] for family in self.families]
        ours = [(f, edge(self._made(family, f))) for f in frequencies[4::10] for family in self.families]
        script = f"""
set title 'low-pass, 6 poles, sampled at {RATE:g} Hz' noenhanced
set xlabel 'frequency requested [Hz]'
set ylabel '-3 dB point achieved [Hz]'
set xrange [0:180]
set yrange [0:180]
set xtics 20
set ytics 20
set size ratio 1
set key outside right top Left reverse samplen 2
plot x with lines linecolor rgb '#bbbbbb' linewidth 4 title 'achieved = requested', \\
     $curve8 with points pointtype 6 pointsize 0.7 linecolor rgb '#000000' title 'mensura/sos.h, all eight', \\
     1 / 0 with lines linecolor rgb '#ffffff' title 'mensura/iir.h:', \\
     """ + ", ".join(f"$curve{i} with lines dashtype 2 linecolor rgb '{COLOURS[i]}' linewidth 1.5 title '{family.name}'"
                     for i, family in enumerate(self.families))
        draw(f"{self._folder}/requested.svg", "900,620", script, [*older, ours])

    def poles(self):
        """Poles (crosses) and zeros (circles) of each family around the unit circle."""
        curves, script = [], f"""
set multiplot layout 2,4 title 'poles (x) and zeros (o): low-pass, 6 poles, -3 dB at {EDGE:g} Hz, sampled at {RATE:g} Hz' noenhanced
set parametric
set trange [0:2*pi]
set samples 200
set size ratio -1
set xrange [-1.25:1.25]
set yrange [-1.25:1.25]
set xtics 1
set ytics 1
set key off
"""
        for i, family in enumerate(self.families):
            made = self._made(family)
            sections = [made.rows[6 * k : 6 * k + 6] for k in range(made.count)]
            curves.append([(z.real, z.imag) for s in sections for z in roots(*s[:3])])
            curves.append([(z.real, z.imag) for s in sections for z in roots(*s[3:])])
            script += f"""
set title '{family.name}' noenhanced
plot cos(t), sin(t) with lines linecolor rgb '#999999', \\
     $curve{2 * i} with points pointtype 6 linecolor rgb '#0072b2', $curve{2 * i + 1} with points pointtype 2 linecolor rgb '#d55e00'
"""
        draw(f"{self._folder}/poles.svg", "1000,560", script + "unset multiplot\n", curves)

    def zero_phase(self):
        """Beats of an electrocardiogram raw, and behind a low-pass one way and both ways."""
        program, record = companion(self._library), ROOT / "examples/data/ecg_mitdb_208.csv"

        def beats(*command):
            text = subprocess.run(command, capture_output=True, text=True, check=True).stdout
            rows = [tuple(map(float, line.split(","))) for line in text.splitlines() if line[0].isdigit()]
            return [row for row in rows if 28.2 <= row[0] <= 29.1]

        low_pass = (program, "filter", "lowpass", "--cutoff", f"{EDGE:g}", "--quiet", record)
        script = f"""
set title 'electrocardiogram, low-pass of {EDGE:g} Hz' noenhanced
set xlabel 'time [s]'
set ylabel 'ECG [mV]'
set xrange [28.2:29.1]
set key above right horizontal
plot $curve0 with lines linecolor rgb '{COLOURS[0]}' linewidth 1.5 title 'raw', \\
     $curve1 with lines linecolor rgb '{COLOURS[2]}' linewidth 1.5 title 'one way', \\
     $curve2 with lines linecolor rgb '{COLOURS[1]}' linewidth 1.5 title 'zero phase'
"""
        draw(f"{self._folder}/zero_phase.svg", "900,420", script,
             [beats("cat", record), beats(*low_pass), beats(*low_pass, "--zero-phase")])

    def windows(self):
        """Weights of some windows, and the spectra of a line in the middle of a bin."""
        names = ("rectangle", "Kaiser, beta 8", "Hanning", "flat top", "Blackman-Harris")
        shown = [w for w in spectral.WINDOWS if w[1] in names]
        weights, spectra = [], []
        for code, _, beta in shown:
            w = spectral.window(self._library, code, beta)
            v = spectral.magnitudes(self._library.FFT, w, 64 * len(w))
            weights.append([(i, w[i]) for i in range(0, len(w), 4)])
            spectra.append([(i / 64, 20 * math.log10(max(v[i] / v[0], 1e-9))) for i in range(12 * 64 + 1)])
        lines = [f"with lines linecolor rgb '{COLOURS[i]}' linewidth 1.5 title '{name}'"
                 for i, name in enumerate(names)]
        script = """
set multiplot layout 1,2
set key top right samplen 2 font ',11'
set xrange [0:1023]
set xtics 256
set yrange [-0.5:5]
set xlabel 'sample'
set ylabel 'weight'
plot """ + ", ".join(f"$curve{i} {line}" for i, line in enumerate(lines)) + """
set key off
set xrange [0:12]
set xtics 2
set yrange [-140:5]
set xlabel 'distance from the line [bins]'
set ylabel 'magnitude [dB]'
plot """ + ", ".join(f"$curve{len(shown) + i} {line}" for i, line in enumerate(lines)) + "\nunset multiplot\n"
        draw(f"{self._folder}/windows.svg", "1000,420", script, [*weights, *spectra])

    def smoothing(self):
        """A narrow and a wide peak in noise, behind a linear and a cubic smoother."""
        noise, samples = random.Random(2), range(121)
        truth = [2 ** -((t - 35) / 3) ** 2 + 2 ** -((t - 85) / 10) ** 2 for t in samples]
        measured = [x + noise.gauss(0, 0.05) for x in truth]

        def smoothed(call):
            out = doubles(len(samples))
            call(doubles(measured), out, len(samples))
            return list(enumerate(out))

        script = """
set title 'peaks 6 and 20 samples wide at half their height, in noise of 0.05 rms' noenhanced
set xlabel 'sample'
set xrange [0:120]
set key top center samplen 2
plot $curve0 with lines linecolor rgb '#000000' dashtype 2 title 'without noise', \\
     $curve1 with points pointtype 7 pointsize 0.4 linecolor rgb '#999999' title 'measured', \\
     $curve2 with lines linecolor rgb '#d55e00' linewidth 1.5 title 'linearSmooth9', \\
     $curve3 with lines linecolor rgb '#0072b2' linewidth 1.5 title 'cubicSmooth7'
"""
        curves = [smoothed(self._library.linearSmooth9), smoothed(self._library.cubicSmooth7)]
        draw(f"{self._folder}/smoothing.svg", "900,420", script,
             [list(enumerate(truth)), list(enumerate(measured)), *curves])

    def tracking(self):
        """The drive of docs/kalman.md, filtered and smoothed: errors of position, and velocities."""
        (truth, measured), program, rate = kalman.drive(), companion(self._library), kalman.DRIVE_RATE
        model = ("--r", f"{kalman.DRIVE_NOISE**2:g}", "--bandwidth")
        filtered = kalman.tracked(program, measured, *model, "0.4", rate=rate)
        smoothed = kalman.tracked(program, measured, *model, "0.2", "--smooth", rate=rate)
        times = [t / rate for t in range(len(truth))]
        curves = [[(t, x - true[0]) for t, x, true in zip(times, measured, truth)]]
        for estimates in (filtered, smoothed):
            curves.append([(t, x[0] - true[0]) for t, x, true in zip(times, estimates, truth)])
        curves += [[(t, x[1]) for t, x in zip(times, rows)] for rows in (truth, filtered, smoothed)]
        script = """
set multiplot layout 2,1
set lmargin 9
set xrange [0:55]
set key above right horizontal
set ylabel 'error of the position [m]'
plot $curve0 with points pointtype 7 pointsize 0.3 linecolor rgb '#999999' title 'measured', \\
     $curve1 with lines linecolor rgb '#d55e00' linewidth 1.5 title 'filtered, 0.4 Hz', \\
     $curve2 with lines linecolor rgb '#0072b2' linewidth 1.5 title 'smoothed, 0.2 Hz'
set xlabel 'time [s]'
set ylabel 'velocity [m/s]'
plot $curve3 with lines linecolor rgb '#000000' dashtype 2 title 'true', \\
     $curve4 with lines linecolor rgb '#d55e00' linewidth 1.5 title 'filtered, 0.4 Hz', \\
     $curve5 with lines linecolor rgb '#0072b2' linewidth 1.5 title 'smoothed, 0.2 Hz'
unset multiplot
"""
        draw(f"{self._folder}/tracking.svg", "900,640", script, [[p for p in curve if p[0] >= 0.5] for curve in curves])

    def integrators(self):
        """A solution, and what its accuracy costs."""
        oscillator, stiff, decay, _ = ode.problems(self._library)
        run, solution = ode.Run(stiff), [(0.0, 2.0)]
        for i in range(1000):
            self._library.rkf452(i / 100, (i + 1) / 100, 200, *run.arguments)
            solution.append(((i + 1) / 100, run.y[0]))
        costs = []
        for problem in (oscillator, stiff, decay):
            runs = [ode.fixed(self._library, problem, 20 * 2**k) for k in range(8)]
            costs.append([(run.count.calls, run.error) for run in runs if run.result == 0])
        for problem in (oscillator, stiff, decay):
            runs = [ode.adaptive(self._library, problem, 50 * 2**k, 1, 1e-10) for k in range(7)]
            costs.append([(run.count.calls, run.error) for run in runs if run.result == 0])
        styles = ("linespoints pointtype 7 pointsize 0.6", "points pointtype 2")
        lines = [f"$curve{1 + 3 * k + i} with {style} linecolor rgb '{COLOURS[1 + i]}' title '{call}, {name}'"
                 for k, (call, style) in enumerate(zip(("rkf452", "rkf45"), styles))
                 for i, name in enumerate(("oscillator", "van der Pol", "decay"))]
        script = """
set multiplot layout 1,2
set key off
set title "y'' = 5 (1 - y^2) y' - y from (2, 0)" noenhanced
set xrange [0:10]
set xlabel 't'
set ylabel 'y'
plot $curve0 with lines linecolor rgb '#d55e00' linewidth 1.5
set title 'what accuracy costs, t = 0 to 10' noenhanced
set key bottom left samplen 2 font ',11'
set logscale xy
set xrange [500:30000]
set format y '10^{%T}'
set xlabel 'calls of f'
set ylabel 'error at t = 10'
plot """ + ", ".join(lines) + "\nunset multiplot\n"
        draw(f"{self._folder}/integrators.svg", "1000,440", script, [solution, *costs])


def edge(filter):
    """The outermost frequency at half the largest power."""
    return filter.crossings(filter.highest(0.0) + HALF_POWER_DB)[-1]


def roots(a, b, c):
    """Of a z^2 + b z + c."""
    if not a:
        return [-c / b] if b else []
    root = cmath.sqrt(b * b - 4 * a * c)
    return [(-b + root) / (2 * a), (-b - root) / (2 * a)]


if __name__ == "__main__":
    pictures = Pictures(load(sys.argv[1]), sys.argv[2])
    pictures.requested()
    pictures.poles()
    pictures.zero_phase()
    pictures.windows()
    pictures.smoothing()
    pictures.tracking()
    pictures.integrators()
