"""Pictures of docs/pictures that the companion does not draw, by gnuplot: `cmake --build ... --target gallery`.

Usage: pictures.py LIBRARY FOLDER
"""

import cmath
import subprocess
import sys

sys.dont_write_bytecode = True
from binding import load
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
        self._designer, self._requests, self._folder = Designer(library), Requests(library), folder
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
