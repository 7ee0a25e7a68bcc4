#include "cli/plot/draw.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "cli/app/diagnostics.h"

namespace cli {

namespace {

constexpr int kNotFound = 127;  // as a shell says it

std::string suffix_of(const std::string &file) {
    const std::size_t dot = file.rfind('.');
    std::string suffix = dot == std::string::npos ? "" : file.substr(dot + 1);
    for (char &c : suffix) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return suffix;
}

std::string file_terminal(const std::string &file, std::size_t panels) {
    const std::size_t height = panels == 1 ? 480 : 320 * panels;
    const std::string suffix = suffix_of(file);
    if (suffix == "svg") return fmt::format("set terminal svg size 900,{} font 'sans,13' background 'white'\n", height);
    if (suffix == "png") return fmt::format("set terminal pngcairo size 900,{} font 'sans,11'\n", height);
    return fmt::format("set terminal pdfcairo size 9in,{:.2f}in font 'sans,11'\n", 0.01 * static_cast<double>(height));
}

std::string text_terminal(std::size_t panels) {
    winsize window = {};
    const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) == 0 && window.ws_col >= 40 && window.ws_row >= 12;
    const std::size_t columns = known ? window.ws_col : 80u, rows = known ? window.ws_row - 1u : 24u;
    return fmt::format("set terminal dumb size {},{}\n", columns, rows * panels);
}

int file_of(std::string_view text) {
    const int file = nameless_file();
    while (!text.empty()) {
        const ssize_t written = write(file, text.data(), text.size());
        if (written < 0) fail("the script for gnuplot: {}", std::strerror(errno));
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    lseek(file, 0, SEEK_SET);
    return file;
}

// gnuplot echoes the command, points at the place and gives the reason last.
std::string last_line_of(int descriptor) {
    std::array<char, 4096> text;
    const off_t size = lseek(descriptor, 0, SEEK_END);
    const ssize_t got = pread(descriptor, text.data(), text.size(), std::max<off_t>(size - 4096, 0));
    std::string_view lines(text.data(), static_cast<std::size_t>(got > 0 ? got : 0));
    lines = lines.substr(0, lines.find_last_not_of(" \n") + 1);
    lines.remove_prefix(lines.find_last_of('\n') + 1);
    return std::string(lines.substr(std::min(lines.find_first_not_of(' '), lines.size())));
}

[[noreturn]] void become_gnuplot(int script, int picture, int complaints) {
    dup2(script, STDIN_FILENO);
    dup2(picture, STDOUT_FILENO);
    dup2(complaints, STDERR_FILENO);
    std::signal(SIGPIPE, SIG_DFL);
    execlp("gnuplot", "gnuplot", "--default-settings", "-", nullptr);
    _exit(kNotFound);
}

// The picture comes through a pipe: gnuplot itself does not tell when it cannot write.
void run_gnuplot(const std::string &script, Output &picture) {
    std::array<int, 2> ends;
    const int commands = file_of(script), complaints = nameless_file();
    if (pipe2(ends.data(), O_CLOEXEC) != 0) fail("gnuplot: {}", std::strerror(errno));
    const pid_t child = fork();
    if (child < 0) fail("gnuplot: {}", std::strerror(errno));
    if (child == 0) become_gnuplot(commands, ends[1], complaints);
    close(commands);
    close(ends[1]);
    copy_rest(ends[0], picture);
    close(ends[0]);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    const std::string complaint = last_line_of(complaints);
    close(complaints);
    if (WIFEXITED(status) && WEXITSTATUS(status) == kNotFound)
        fail("gnuplot, which draws the pictures, is not installed: apt-get install gnuplot-nox");
    if (status != 0) fail("gnuplot failed: {}", complaint.empty() ? "no reason given" : complaint);
}

}  // namespace

bool is_picture(const std::string &file) {
    const std::string suffix = suffix_of(file);
    return suffix == "svg" || suffix == "png" || suffix == "pdf";
}

void add_plot_options(const Command &app, PlotOptions &plot) {
    app.add_option(
           "--plot",
           [&plot](const std::string &file) {
               if (file != kPlotInTerminal && !is_picture(file))
                   reject_option("--plot", fmt::format("\"{}\" does not end in .svg, .png or .pdf", file));
               plot = {file == kPlotInTerminal ? PlotOptions::Terminal : PlotOptions::File, file};
           },
           "draw a picture, --plot=FILE.svg, .png or .pdf; plain --plot draws in the terminal instead of the data")
        .type_name("[=FILE]");
    app.add_flag(
        "--plot-script", [&plot] { plot.kind = PlotOptions::Script; },
        "print the gnuplot script of the picture instead of the data");
}

std::string data_file(const PlotOptions &plot, const std::string &output) {
    return plot.on_standard_output() && output.empty() ? "/dev/null" : output;
}

void draw(const Figure &whole, const PlotOptions &plot) {
    if (!plot.wanted()) return;
    const Figure figure = drawable(whole);
    if (figure.panels.empty()) fail("there is nothing to draw: no curve has a point");
    const std::string script =
        gnuplot_script(figure, plot.kind != PlotOptions::Terminal);  // of letters it hides the curve
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
