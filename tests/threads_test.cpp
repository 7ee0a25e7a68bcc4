// All that may run in several threads at once gives the bits of one thread.
#include <gtest/gtest.h>
#include <mensura/matrix.h>

#include <algorithm>
#include <array>
#include <string>
#include <thread>
#include <vector>

#include "machines/groups.h"
#include "support/expect.h"

constexpr std::size_t kThreads = 4;

void in_threads(auto f) {  // f(0), f(1), ... at the same time
    std::vector<std::jthread> threads;
    for (std::size_t i = 0; i < kThreads; ++i) threads.emplace_back([=] { f(i); });
}

static std::vector<Results> results_of(std::span<const Group> groups, std::size_t first) {
    std::vector<Results> results(groups.size());
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const std::size_t at = (first + i) % groups.size();
        groups[at].run(results[at]);
    }
    return results;
}

TEST(Threads, have_the_bits_of_one_in_every_group) {
    std::vector<Group> groups;
    std::ranges::copy_if(kAllGroups, std::back_inserter(groups), [](const Group &g) { return !g.shared; });
    const auto alone = results_of(groups, 0);
    std::array<std::vector<Results>, 2 * kThreads> together;
    in_threads([&](std::size_t i) {  // half of them side by side with themselves, then all with others
        together[i] = results_of(groups, i / 2);
        together[kThreads + i] = results_of(groups, 5 * i);
    });
    for (const auto &results : together)
        for (std::size_t i = 0; i < groups.size(); ++i) EXPECT_SAME_BITS(results[i], alone[i]) << groups[i].name;
}

TEST(Threads, may_print_at_the_same_time) {
    static RMATRIX m;
    initRMATRIX_identity(&m, 2, 3);
    testing::internal::CaptureStdout();
    in_threads([](std::size_t) {
        rmatrix_printf_ptr(&m);
        rmatrix_printf(m);
    });
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(std::ranges::count(out, '\n'), kThreads * 2 * 5);  // two rules, the size, two rows
    EXPECT_EQ(std::ranges::count(out, '1'), kThreads * 2 * 2);
}
