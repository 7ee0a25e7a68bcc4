// The program as a whole: its version, its reports as JSON, what shells complete.

#include <nlohmann/json.hpp>

#include "program.h"

TEST_F(CommandLine, version_has_two_names) {
    EXPECT_EQ(run("-V"), 0);
    const std::string version = out;
    EXPECT_TRUE(version.starts_with("mensura ")) << version;
    EXPECT_EQ(run("--version"), 0);
    EXPECT_EQ(out, version);
}

// Each line of a shell is completed at its end.
TEST_F(CommandLine, bash_completes_commands_options_words_and_files) {
    write("complete.sh",
          "source <($M completion bash)\n"
          "try() { COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _mensura; echo ${COMPREPLY[@]}; }\n"
          "try mensura fil\ntry mensura filter --fam\ntry mensura filter --family inv\ntry mensura filter --family = "
          "pap\n"
          "try mensura filter --cutoff 40Hz no\ntry mensura filter --cutoff = 40Hz no\ntry mensura filter notch no\n"
          "try mensura design lowpass --show =\ntry mensura window kaiser-\ntry mensura demo ''\ntry mensura x ''\n");
    EXPECT_EQ(shell("bash complete.sh"), 0);
    EXPECT_EQ(
        out, "filter\n--family\ninverse-chebyshev\npapoulis\nnotch\nnotch\n\nresponse step poles\nkaiser-bessel\n\n\n");
    EXPECT_EQ(err, "");
    write("options.sh",
          "source <($M completion bash)\n"
          "for c in $($M --help | sed -n '/^Subcommands:/,/^$/s/^  \\([a-z]*\\) .*/\\1/p'); do\n"
          "    COMP_WORDS=(mensura $c -) COMP_CWORD=2; _mensura; echo $c ${COMPREPLY[@]} >>completed\n"
          "    echo $c $($M $c --help | grep -oE '^  -[a-zA-Z,-]+' | tr , ' ') >>helped\n"
          "done; diff completed helped && wc -l <helped\n");
    EXPECT_EQ(shell("bash options.sh"), 0) << out << err;
    EXPECT_GE(std::stoi(out), 14) << "commands";
}

TEST_F(CommandLine, zsh_takes_its_script) {
    if (shell("command -v zsh") != 0) GTEST_SKIP() << "no zsh here";
    EXPECT_EQ(shell("\"$M\" completion zsh >_mensura && zsh -n _mensura && head -n 1 _mensura"), 0) << err;
    EXPECT_EQ(out, "#compdef mensura\n");
}

TEST_F(CommandLine, fish_completes_commands_options_words_and_files) {
    if (shell("command -v fish") != 0) GTEST_SKIP() << "no fish here";
    write(
        "complete.fish",
        "$M completion fish | source\n"
        "for line in 'mensura fil' 'mensura spectrum --windo' 'mensura spectrum --window kaiser-' 'mensura filter no' "
        "'mensura filter notch n' 'mensura spectrum nu'\n    complete -C $line | cut -f 1\nend\n");
    write("numbers.csv", "");
    EXPECT_EQ(shell("HOME=. fish complete.fish"), 0) << err;
    EXPECT_EQ(out, "filter\n--window\nkaiser-bessel\nnotch\nnumbers.csv\nnumbers.csv\n");
}

TEST_F(CommandLine, reports_as_json_hold_the_numbers_of_the_tables) {
    ASSERT_EQ(run("roots 2 -.5 1 7 0 --json"), 0) << err;
    const auto report = nlohmann::json::parse(out);
    EXPECT_EQ(report["coefficients"], (std::vector<double>{2, -.5, 1, 7, 0}));
    EXPECT_EQ(report["fits"], true);
    EXPECT_LT(report["largest_misfit"], 1e-15);
    ASSERT_EQ(run("roots 2 -.5 1 7 0"), 0);
    std::vector<std::vector<double>> roots;
    for (const auto &root : report["roots"]) roots.push_back({root["real"], root["imaginary"], root["residual"]});
    EXPECT_EQ(roots, rows(out));

    ASSERT_EQ(run("demo --json"), 0) << err;
    const auto demo = nlohmann::json::parse(out);
    EXPECT_EQ(demo["beats"], 46);
    EXPECT_EQ(demo["signals"][2]["signal"], "lowpass");
    EXPECT_NEAR(demo["signals"][2]["kept_median_percent"], 97.7, 0.05);
}

TEST_F(CommandLine, calls_that_go_wrong_name_the_word) {
    write("x.csv", "1\n");
    expect_refusals("", {{"stats ''", "FILE: must not be empty"},
                         {"tone 50 --rate 1kHz ''", "must not be empty"},
                         {"stats -o '' x.csv", "--output: must not be empty"},
                         {"stats --output= x.csv", "--output: must not be empty"},
                         {"roots 1 -- -.5", "\"-.5\" is one argument too many for roots"},
                         {"stats -x x.csv", "stats has no option -x;"},
                         {"filter --sos '' x.csv", "--sos: must not be empty"},
                         {"stats --rate 1kHz x.csv", "mensura: stats has no option --rate;"},
                         {"stats x.csv y.csv", "\"y.csv\" is one argument too many for stats"}});
}

// JSON has no infinity, and its text is UTF-8.
TEST_F(CommandLine, json_takes_silence_and_names_in_latin_1) {
    write("x.csv", "\xB5V,b\n0,0\n0,1\n");
    ASSERT_EQ(run("tone .25 .5 --rate 1 --db --json x.csv"), 0) << err;
    const auto columns = nlohmann::json::parse(out)["columns"];
    EXPECT_EQ(columns[0]["column"], "\xC2\xB5V");
    EXPECT_EQ(columns[0]["tones"][1]["amplitude_dB"], nullptr);
    ASSERT_EQ(run("tone .25 .5 --rate 1 --db x.csv"), 0);
    EXPECT_EQ(columns[1]["tones"][0]["amplitude_dB"], rows(out)[0].back());
}

TEST_F(CommandLine, messages_hold_no_control_characters_of_the_data) {
    write("x.csv", "x\n1\n\x1B[31m\x7F\n");
    EXPECT_EQ(run("average --length 2 --strict x.csv"), 2);
    EXPECT_HAS(err, "x.csv:3:1: \"?[31m?\" is not a number");
}

TEST_F(CommandLine, pictures_depend_on_no_setting_of_gnuplot) {
    write("x.csv", "1\n2\n0\n");
    write(".gnuplot", "system 'touch ran'\n");
    EXPECT_EQ(shell("HOME=. GNUPLOT_LIB=. GNUTERM='x; system \"touch ran\"' $M " + kLowpass + "x.csv --plot=y.svg"), 0)
        << err;
    EXPECT_EQ(shell("env -i PATH=\"$PATH\" \"$M\" " + kLowpass + "x.csv --plot=z.svg; cmp y.svg z.svg"), 0) << err;
    EXPECT_FALSE(std::filesystem::exists("ran"));
}
