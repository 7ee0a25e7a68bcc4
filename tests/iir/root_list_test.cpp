// The steps from a root list to sections, and the small helpers of the families.
#include <gtest/gtest.h>
#include <mensura/iir.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <numeric>
#include <vector>

#include "support/expect.h"
#include "support/noise.h"

TEST(PrototypeUtility, factorial_and_reverse_coeff) {
    for (const auto &[k, factorial] : {std::pair{-3, 1.0}, {0, 1.0}, {5, 120.0}, {INT_MAX, HUGE_VAL}})
        EXPECT_EQ(Factorial(k), factorial) << k;
    EXPECT_EQ(Factorial(22), 1124000727777607680000.0);
    std::array<double, 3> p = {2, 4, 8}, zero_last = {5, 1, 0};
    ReverseCoeff(p.data(), 2);
    ReverseCoeff(zero_last.data(), 2);
    ReverseCoeff(nullptr, -1);
    EXPECT_EQ(p, (std::array{1.0, 0.5, 0.25}));
    EXPECT_EQ(zero_last, (std::array{1.0, 1.0, 5.0}));
}

TEST(PrototypeUtility, rebuild_poly_multiplies_the_sections) {
    std::array<double, 3> c2 = {1, 0, 0}, c1 = {2, 1, 0}, c0 = {3, 4, 5}, zeros{};  // (s^2 + 2 s + 3) (s + 4) 5
    std::array<double, 7> poly{};
    EXPECT_EQ(RebuildPoly(3, poly.data(), c2.data(), c1.data(), c0.data()), 3);
    EXPECT_EQ(poly, (std::array{60.0, 55.0, 30.0, 5.0, 0.0, 0.0, 0.0}));
    c2[2] = NAN;  // is other than 0
    EXPECT_EQ(RebuildPoly(3, poly.data(), c2.data(), c1.data(), c0.data()), 6);
    EXPECT_EQ(RebuildPoly(2, poly.data(), zeros.data(), zeros.data(), zeros.data()), -1);
    for (const int count : {-1, 0, 51}) EXPECT_EQ(RebuildPoly(count, nullptr, nullptr, nullptr, nullptr), -1);
}

TEST(PrototypeUtility, heap_index_sort_orders_a_permutation) {
    support::Noise noise(7);
    for (int n = 2; n < 130; ++n)
        for (const int ascending : {0, 1}) {
            SCOPED_TRACE(testing::Message() << n << " keys, ascending " << ascending);
            std::vector<double> keys(static_cast<std::size_t>(n)), sorted;
            std::ranges::generate(keys, [&] { return noise.below(40); });  // with ties
            std::vector<int> index(keys.size()), all(keys.size());
            std::iota(all.begin(), all.end(), 0);
            index = all;
            EXPECT_EQ(HeapIndexSort(keys.data(), index.data(), n, ascending), 1);
            EXPECT_TRUE(std::ranges::is_permutation(index, all));
            for (const int i : index) sorted.push_back(ascending ? keys.data()[i] : -keys.data()[i]);
            EXPECT_TRUE(std::ranges::is_sorted(sorted)) << testing::PrintToString(sorted);
        }
    double ties[] = {2, 1, 2, 1, 2, 1, 2, 1};  // expected as a second, independent heap sort left them
    std::array<int, 8> up = {0, 1, 2, 3, 4, 5, 6, 7}, down = up;
    HeapIndexSort(ties, up.data(), 8, 1);
    HeapIndexSort(ties, down.data(), 8, 0);
    EXPECT_EQ(up, (std::array{7, 5, 3, 1, 2, 6, 4, 0}));
    EXPECT_EQ(down, (std::array{6, 2, 0, 4, 5, 7, 3, 1}));
    double key = 1;
    int index = 0;
    for (const int count : {INT_MIN, 0, 1}) EXPECT_EQ(HeapIndexSort(&key, &index, count, 1), 0);
}

using Quadratic = std::array<double, 3>;  // c2, c1, c0

static std::vector<Quadratic> sections_of(std::vector<CplxD> roots) {
    std::vector<double> c2(MAX_IIR_SECTIONS), c1 = c2, c0 = c2;
    const int count = GetFilterCoeff(static_cast<int>(roots.size()), roots.data(), c2.data(), c1.data(), c0.data());
    std::vector<Quadratic> sections;
    for (std::size_t k = 0; k < static_cast<std::size_t>(count); ++k) sections.push_back({c2[k], c1[k], c0[k]});
    return sections;
}

TEST(PrototypeUtility, sections_of_a_root_list_come_most_damped_first) {
    // A pair, a near duplicate that replaces one of it, roots whose smaller part just is and just is not set to 0, and
    // two roots that have no section.
    const auto sections = sections_of(
        {{-1, 2}, {-1, -2}, {-1.0005, 2.0005}, {-3, 1e-4}, {-1.999e-3, 2}, {-0.004, -3.9999}, {1, 1}, {0, 0}});
    const std::vector<Quadratic> expected = {
        {0, 1, 3}, {1, 2.001, 5.0030005}, {1, 2, 5}, {1, 0.008, 15.99921601}, {1, 0, 4}};
    ASSERT_EQ(sections.size(), expected.size());
    for (std::size_t k = 0; k < expected.size(); ++k) {
        EXPECT_EQ(sections[k][0], expected[k][0]) << "section " << k;
        EXPECT_EQ(sections[k][1], expected[k][1]) << "section " << k;
        EXPECT_NEAR(sections[k][2], expected[k][2], 1e-12) << "section " << k;
    }
    EXPECT_EQ(sections_of({{NAN, 1}, {-1, NAN}, {-2, 1}, {NAN, NAN}}), (std::vector<Quadratic>{{1, 4, 5}}));
    EXPECT_EQ(GetFilterCoeff(0, nullptr, nullptr, nullptr, nullptr), 0);

    std::array<CplxD, 3> axis = {{{0, -3}, {0, 1}, {1e-5, -2}}};  // sorted by |im|
    SortRootsByZeta(axis.data(), 3, 1);
    EXPECT_SAME_BITS(axis, (std::array<CplxD, 3>{{{0, 1}, {0, -2}, {0, -3}}}));
    for (const int count : {-1, 0, 100}) SortRootsByZeta(nullptr, count, 1);
}
