// Runs the program as a user would: a shell, files, pipes.  Each test has a directory of its own.
#pragma once

#include <gtest/gtest.h>
#include <mensura/iir.h>
#include <mensura/sos.h>
#include <sys/wait.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/folder.h"

inline const std::string kLowpass = "filter lowpass --cutoff 40Hz --rate 360Hz --quiet ";

// The text has this in it; a failure shows both.
#define EXPECT_HAS(text, part) EXPECT_PRED2(has, text, part)
inline bool has(const std::string &text, const std::string &part) { return text.find(part) != std::string::npos; }

class CommandLine : public testing::Test {
  protected:
    void write(const std::string &file, const std::string &text) const {
        std::ofstream(file, std::ios::binary) << text;
    }
    std::string read(const std::string &file) const {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    // A line of shell in which $M is the program; its output is then in out and err.  Returns the exit status.
    int shell(const std::string &line) {
        const std::string command = "export M='" MENSURA "' && ( " + line + " ) >.out 2>.err </dev/null";
        const int status = std::system(command.c_str());
        out = read(".out");
        err = read(".err");
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    int run(const std::string &arguments) { return shell("\"$M\" " + arguments); }

    // The numbers of a CSV, row by row, without its header.
    static std::vector<std::vector<double>> rows(const std::string &csv) {
        std::vector<std::vector<double>> table;
        std::istringstream lines(csv);
        for (std::string line; std::getline(lines, line);) {
            std::vector<double> row;
            std::istringstream cells(line);
            for (std::string cell; std::getline(cells, cell, ',');)
                if (double value = 0; std::istringstream(cell) >> value) row.push_back(value);
            if (!row.empty()) table.push_back(row);
        }
        return table;
    }
    static std::vector<double> column(const std::vector<std::vector<double>> &table, std::size_t index) {
        std::vector<double> values;
        for (const std::vector<double> &row : table) values.push_back(row.at(index));
        return values;
    }

    // Samples that every filter changes.
    static std::vector<double> signal(std::size_t n) {
        std::vector<double> x(n);
        for (std::size_t i = 0; i < n; ++i)
            x[i] = 0.3 * std::sin(0.02 * static_cast<double>(i)) - 0.1 * static_cast<double>(i % 3);
        return x;
    }
    // What kLowpass makes of them, one way or with zero phase.
    static std::vector<double> low_pass(double cutoff, int passes, double rate = 360) {
        mensura_sos_request request;
        mensura_sos_default_request(&request, sizeof request);
        request.rate = rate;
        request.edge[0] = cutoff;
        request.passes = passes;
        return designed(request);
    }
    static std::vector<double> designed(const mensura_sos_request &request) {
        std::vector<double> sos(6 * std::size_t{MENSURA_SOS_MAX_SECTIONS});
        const int sections = mensura_sos_design(&request, sos.data(), MENSURA_SOS_MAX_SECTIONS);
        EXPECT_GT(sections, 0) << mensura_sos_message(sections);
        sos.resize(6 * static_cast<std::size_t>(std::max(sections, 1)));
        return sos;
    }
    static std::vector<double> filtered(const std::vector<double> &x, double cutoff = 40) {
        return one_way(low_pass(cutoff, 1), x);
    }
    static std::vector<double> zero_phase(const std::vector<double> &x, double cutoff = 40) {
        return both_ways(low_pass(cutoff, 2), x);
    }
    static std::vector<double> one_way(const std::vector<double> &sos, std::vector<double> x) {
        const auto sections = static_cast<int>(sos.size() / 6);
        std::vector<double> state(sos.size());
        EXPECT_EQ(mensura_sos_steady_state(sos.data(), sections, x[0], state.data()), 0);
        EXPECT_EQ(mensura_sos_filter(sos.data(), sections, state.data(), x.data(), 1, x.data(), 1, std::ssize(x)), 0);
        return x;
    }
    static std::vector<double> both_ways(const std::vector<double> &sos, std::vector<double> x) {
        const auto sections = static_cast<int>(sos.size() / 6);
        const std::ptrdiff_t most = std::ssize(x) - 1, usual = mensura_sos_extension(sos.data(), sections);
        EXPECT_EQ(mensura_sos_filtfilt(sos.data(), sections, MENSURA_SOS_ENDS_ODD, std::min(usual, most), x.data(), 1,
                                       x.data(), 1, std::ssize(x), nullptr),
                  0);
        return x;
    }
    // The layout with a number, in digits that read back as the same, in place of every @.
    static std::string filled(const std::string &layout, const std::vector<double> &numbers) {
        std::string text;
        std::size_t next = 0;
        for (const char c : layout) {
            char digits[32] = {c};
            text.append(digits,
                        c == '@' ? std::to_chars(digits, std::end(digits), numbers.at(next++)).ptr : digits + 1);
        }
        return text;
    }

    // The call is refused with one line on stderr that has this in it, and nothing on stdout.
    void expect_refused(const std::string &arguments, const std::string &reason, int status = 2) {
        SCOPED_TRACE(arguments);
        EXPECT_EQ(run(arguments), status);
        EXPECT_HAS(err, reason);
        EXPECT_EQ(err.find('\n') + 1, err.size()) << err;
        EXPECT_EQ(out, "");
    }
    // Pairs of arguments and a part of the reason.
    void expect_refusals(const std::string &command, const std::vector<std::pair<std::string, std::string>> &calls,
                         int status = 2) {
        for (const auto &[arguments, reason] : calls) expect_refused(command + arguments, reason, status);
    }

    std::string out, err;

  private:
    support::Folder folder_;
};
