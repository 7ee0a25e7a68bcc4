#include "cli/plot/draw.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstddef>
#include <string>

#include "cli/app/diagnostics.h"
#include "cli/files/output.h"
#include "cli/plot/gnuplot.h"
#include "cli/plot/page/page.h"
#include "cli/plot/script.h"

namespace cli {

namespace {

std::string file_terminal(const std::string &file, std::size_t panels) {
    const std::size_t height = panels == 1 ? 480 : 320 * panels;
    const std::string suffix = suffix_of(file);
    if (suffix == "svg") return fmt::format("set terminal svg size 900,{} font 'sans,13' background 'white'\n", height);
    if (suffix == "png") return fmt::format("set terminal pngcairo size 900,{} font 'sans,11'\n", height);
    return fmt::format("set terminal pdfcairo size 9in,{:.2f}in font 'sans,11'\n", 0.01 * static_cast<double>(height));
}

// Letters in the size of the terminal; 80 by 24 where standard output is none.
std::string text_terminal(std::size_t panels) {
    winsize window = {};
    const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) == 0 && window.ws_col >= 40 && window.ws_row >= 12;
    const std::size_t columns = known ? window.ws_col : 80u, rows = known ? window.ws_row - 1u : 24u;
    return fmt::format("set terminal dumb size {},{}\n", columns, rows * panels);
}

void write_page(const Figure &figure, const std::string &file) {
    Output out(file);
    out.write(html_page(figure));
    out.commit();
}

}  // namespace

void draw(const Figure &whole, const PlotOptions &plot) {
    if (!plot.wanted()) return;
    const Figure figure = drawable(whole);
    if (figure.panels.empty()) fail("there is nothing to draw: no curve has a point");
    if (plot.kind == PlotOptions::Terminal && has_image(figure))
        reject("a terminal shows no picture in colours; choose a file, such as --plot=FILE.png");
    if (plot.is_page()) return write_page(figure, plot.file);
    const bool grid = plot.kind != PlotOptions::Terminal;  // a grid of letters hides the curve
    const std::string script = gnuplot_script(figure, grid);
    Output out(plot.kind == PlotOptions::File ? plot.file : "");
    if (plot.kind == PlotOptions::Script)
        out.write(script);
    else if (plot.kind == PlotOptions::Terminal)
        run_gnuplot(text_terminal(figure.panels.size()) + script, out);
    else
        run_gnuplot(file_terminal(plot.file, figure.panels.size()) + script, out);
    out.commit();
}

}  // namespace cli
