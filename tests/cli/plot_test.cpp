// Pictures.

#include <random>

#include "program.h"

// The curves in an SVG that xmllint finds well-formed and that have a path.
const std::string kCurves =
    "xmllint --xpath \"count(//*[starts-with(@id, 'gnuplot_plot')][.//*[local-name() = 'path']])\" ";

TEST_F(CommandLine, pictures_hold_every_curve) {
    write("x.csv", "a<b & 'c',note,\xB5V,none\n1,x,4,\n2,y,3,NaN\n0,z,1,\n");  // in Latin-1, with columns to leave out
    for (const auto &[call, curves] :
         {std::pair{"design bandpass --from 20 --to 40 --rate 360 --plot=x.svg", 2},
          {"design lowpass --cutoff 40 --rate 360 --all-families --plot=x.svg", 16},
          {"design lowpass --cutoff 40 --rate 360 --all-families --show step --plot=x.svg", 8},
          {"design lowpass --leading-sections --cutoff 40 --rate 360 --poles 60 --plot=x.svg", 1},
          {"filter lowpass --cutoff 40 --rate 360 x.csv --plot x.svg", 4}}) {
        EXPECT_EQ(run(call), 0) << err;
        EXPECT_NE(out, "");
        EXPECT_EQ(shell("xmllint --noout x.svg && " + kCurves + "x.svg"), 0) << err;
        EXPECT_GE(std::strtol(out.c_str(), nullptr, 10), curves) << call;
    }
    EXPECT_EQ(run("design lowpass --cutoff 40 --rate 360 --show poles --plot-script"), 0) << err;
    EXPECT_HAS(out, "points pointtype 2");
    EXPECT_EQ(run(kLowpass + "x.csv --column=1 -o y.csv --plot=x.png"), 0) << err;
    EXPECT_TRUE(read("x.png").starts_with("\x89PNG\r\n\x1A\n"));
    EXPECT_EQ(run(kLowpass + "x.csv --column=1 --plot=x.PDF"), 0) << err;
    EXPECT_TRUE(read("x.PDF").starts_with("%PDF-"));
    EXPECT_EQ(out, read("y.csv"));
    expect_refused(kLowpass + "x.csv --plot=x.txt", "\"x.txt\" does not end in .svg, .png, .pdf or .html");
}

// UTF-8 stays; other bytes, here Latin-1 and an overlong form of "/", become the code points of their values.
TEST_F(CommandLine, names_in_pictures_are_utf8) {
    write("x.csv", "\u00B5V,\xB5V,a\xC0\xAF\n1,1,1\n2,2,2\n");
    EXPECT_EQ(run(kLowpass + "x.csv --plot-script"), 0) << err;
    for (const char *label : {"'\u00B5V'", "'a\u00C0\u00AF'"}) EXPECT_HAS(out, label);
    EXPECT_EQ(shell("\"$M\" " + kLowpass + "x.csv --plot-script | iconv -f utf-8 -t utf-8"), 0) << err;
}

TEST_F(CommandLine, plot_and_its_script_take_the_place_of_the_data) {
    write("x.csv", "x\n1\n2\n0\n");
    EXPECT_EQ(run(kLowpass + "x.csv --plot"), 0) << err;
    EXPECT_HAS(out, "+--------------");
    EXPECT_EQ(out.find("x\n1\n"), std::string::npos) << out;
    EXPECT_EQ(shell("{ echo set terminal dumb; $M " + kLowpass + "x.csv --plot-script; } | gnuplot"), 0) << err;
    EXPECT_HAS(out, "+--------------");
}

TEST_F(CommandLine, pictures_of_long_records_stay_small) {
    ASSERT_EQ(shell("seq 1000000 >x.csv"), 0);
    EXPECT_EQ(run(kLowpass + "x.csv -o /dev/null --plot=x.svg"), 0) << err;
    EXPECT_GT(read("x.svg").size(), 20000u);
    EXPECT_LT(read("x.svg").size(), 300000u);
}

// Whatever the name of a column or a file holds stays text, for gnuplot, for HTML and for the scripts in it.
TEST_F(CommandLine, names_do_not_become_commands) {
    const std::string tag = "</script><script>alert(1)</script><!--", file = "<b>'$(touch harm)'\n`touch harm`.csv";
    write("x.csv", tag + "\t$(touch harm)&amp;'; system \"touch harm\" # `touch harm`\n1\t1\n2\t3\n0\t1\n");
    write(file, "0.5,0,0,1,0,0\n");
    const std::string call =
        "\"$M\" filter --quiet --sos \"$(printf \"<b>'\\$(touch harm)'\\n\\`touch harm\\`.csv\")\" ";
    EXPECT_EQ(shell(call + "x.csv --plot=x.html && " + call + "x.csv --plot=x.svg"), 0) << err;
    const std::string page = read("x.html");
    EXPECT_EQ(page.find(tag), std::string::npos);
    EXPECT_HAS(page, R"("\u003c/script\u003e\u003cscript\u003ealert(1)\u003c/script\u003e\u003c!--")");
    EXPECT_HAS(page, R"("$(touch harm)\u0026amp;'; system \"touch harm\" # `touch harm`")");
    EXPECT_HAS(page, "<h1>1 section of &lt;b&gt;'$(touch harm)'\n`touch harm`.csv</h1>");
    EXPECT_EQ(shell("xmllint --noout x.svg; ls harm"), 2) << out;
}

// A page can be opened without a network: a browser that finds a script or a style in it asks for no other file.
TEST_F(CommandLine, pages_hold_all_that_they_need) {
    ASSERT_EQ(shell("seq 300000 >x.csv"), 0);
    EXPECT_EQ(run(kLowpass + "x.csv -o /dev/null --plot=x.html"), 0) << err;
    const std::string page = read("x.html");
    EXPECT_HAS(page, "default-src 'none'; script-src 'unsafe-inline'; style-src 'unsafe-inline'");
    EXPECT_HAS(page, "The MIT License (MIT)");
    for (const char *outside : {"src=", "href=", "@import", "url(", "fetch(", "import("})
        EXPECT_EQ(page.find(outside), std::string::npos) << outside;
    EXPECT_LT(page.size(), 5'000'000u);
    EXPECT_EQ(run("design bandpass --from 20 --to 40 --rate 360 --show poles --plot=x.html -o /dev/null"), 0) << err;
    EXPECT_HAS(read("x.html"),
               "<h1>bandpass, butterworth, 6 poles, -3 dB at 20 and 40 Hz, 20 Hz wide, sampled at 360 Hz");
}

// A sine of 1 A in noise: its line has a label, the noise has none.
TEST_F(CommandLine, spectra_have_units_and_labels_at_lines) {
    std::string text = "current [A]\n";
    std::mt19937 noise(1);
    for (int i = 0; i < 4000; ++i)
        text += std::to_string(std::sin(0.4 * i) + 1e-10 * static_cast<double>(noise())) + "\n";
    write("x.csv", text);
    const std::string spectrum = "spectrum x.csv --rate 1000 --window hanning --plot-script ";
    EXPECT_EQ(run(spectrum + "--db --axis log"), 0) << err;
    for (const char *part : {"set ylabel 'current [dB re 1 A]'", "set label '63.66 Hz'", "set logscale x"})
        EXPECT_HAS(out, part);
    EXPECT_EQ(out.find("set label '"), out.rfind("set label '"));
    EXPECT_EQ(run(spectrum + "--density"), 0) << err;
    EXPECT_HAS(out, "set ylabel 'current, density [A^2/Hz]'");
}

// Two lines close together, of which one is far lower, and one at the left edge: each has its label.
TEST_F(CommandLine, spectra_show_every_line_and_band) {
    std::string text = "a [g]\n";
    std::mt19937 noise(1);
    for (int i = 0; i < 20000; ++i)
        text += std::to_string(9 + std::sin(0.0551 * i) + 0.1 * std::sin(0.391 * i) + 0.001 * std::sin(0.006 * i) +
                               1e-12 * static_cast<double>(noise())) +
                "\n";
    write("x.csv", text);
    EXPECT_EQ(run("spectrum x.csv --rate 48000 --db --window hanning --no-mean --plot-script"), 0) << err;
    for (const char *frequency : {"'421 Hz'", "'2987", "'45."}) EXPECT_HAS(out, std::string("set label ") + frequency);
    EXPECT_HAS(out, " left offset 0,0.7");
    EXPECT_EQ(run("spectrum x.csv --rate 48000 --average --density --bands 100Hz-1kHz --plot-script"), 0) << err;
    for (const char *part : {"set logscale y", "rectangle from 100, graph 0 to 1000, graph 1", "set label 'rms 0.70"})
        EXPECT_HAS(out, part);
}

TEST_F(CommandLine, pictures_keep_holes_open) {
    std::string text = "time,x\n-,m\n";
    for (int i = 0; i < 200; ++i)
        text += std::to_string(0.01 * (i < 100 ? i : i + 500)) + "," + std::to_string(i % 7) + "\n";
    write("x.csv", text);
    for (const char *call : {"filter lowpass --cutoff 5Hz --zero-phase --gaps split", "average --length 3",
                             "filter lowpass --cutoff 5Hz --rate 100Hz", "track --bandwidth 1Hz --r 1 --gaps split"}) {
        EXPECT_EQ(run(std::string(call) + " x.csv --plot-script"), 0) << err;
        for (const char *part : {" NaN\n6 ", "\n6.99 ", "set xlabel 'time [s]'", "set ylabel 'x [m]'"})
            EXPECT_HAS(out, part);
    }
}

TEST_F(CommandLine, pictures_show_what_is_printed_and_have_room_for_it) {
    EXPECT_EQ(run("design lowpass --cutoff 40 --rate 360 --impulse 100 --plot-script"), 0) << err;
    EXPECT_HAS(out, "set ylabel 'response to an impulse of 1'");
    EXPECT_EQ(run("roots 1 -6 11 -6 --plot-script"), 0) << err;
    EXPECT_HAS(out, "set xrange [-1.4:3.4] noextend\nset yrange [-2.4:2.4]");
    write("x.csv", std::string(200, 'x') + " [mV]\n1\n2\n3\n");
    EXPECT_EQ(run(kLowpass + "x.csv --plot-script"), 0) << err;
    EXPECT_HAS(out, "set ylabel '" + std::string(18, 'x') + "\u2026" + std::string(12, 'x') + " [mV]'");
}

TEST_F(CommandLine, axes_suit_the_band) {
    const std::string script = " --rate 360 --plot-script";
    EXPECT_EQ(run("design bandpass --from 20 --to 40" + script), 0) << err;
    for (const char *line : {"set nologscale x", "set xrange [0:100]", "'-3 dB at 20 Hz'", "'clipped at -100 dB'",
                             "set yrange [-180:180]\nset ytics 90"})
        EXPECT_HAS(out, line);
    EXPECT_EQ(run("design bandpass --from 0.5 --to 40" + script), 0) << err;
    EXPECT_HAS(out, "set logscale x");
    EXPECT_EQ(run("design lowpass --cutoff 40 --poles 1 --axis linear" + script), 0) << err;
    for (const char *line : {"set nologscale x", "set xrange [0:180]", "set yrange [-90:0]\nset ytics 45"})
        EXPECT_HAS(out, line);
    expect_refused("design lowpass --cutoff 40 --rate 360 --axis log", "--axis is for --plot and --plot-script");
}
