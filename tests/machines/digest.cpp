// Fingerprints of the bits that the groups give on seeded data, to compare machines, compilers and options.
//
//     digest                   for each group its name, its kind (groups.h), FNV-1a of the doubles
//     digest --write FILE      all the doubles, as memory has them
//     digest --compare FILE    groups whose doubles differ from those of such a file: how many, and by how much; 1 if
//                              that is beyond the tolerance of their kind
#include <algorithm>
#include <cmath>
#include <compare>
#include <cstdio>
#include <fstream>
#include <string_view>

#include "groups.h"
#include "support/bits.h"
#include "support/hash.h"

static void print_fingerprint(const Group &group, const Results &results) {
    support::Hash hash;
    for (const double x : results) hash.add(x);
    constexpr const char *kKinds[] = {"exact", "libm", "roots"};
    std::printf("%-28s %-5s %016llx\n", group.name, kKinds[static_cast<int>(group.bits)],
                static_cast<unsigned long long>(hash.value()));
}

// Of the largest value in a group.  Designs made from the roots of a polynomial lose up to half of their digits.
constexpr double kTolerance[] = {0, 4e-16, 1e-8};

static bool within_tolerance(const Group &group, Results results, Results other) {
    if (group.bits == Group::Bits::kRoots)
        for (Results *const values : {&results, &other})
            std::ranges::sort(*values, [](double a, double b) { return std::is_lt(std::strong_order(a, b)); });
    std::size_t differing = 0;
    double largest = 0, difference = 0;
    for (std::size_t i = 0; i < results.size(); ++i) {
        largest = std::max(largest, std::fabs(results[i]));
        if (support::same_bits(results[i], other[i])) continue;
        ++differing;
        const double distance = std::fabs(results[i] - other[i]);
        difference = std::isfinite(distance) ? std::max(difference, distance) : HUGE_VAL;
    }
    if (differing > 0)
        std::printf("%-28s %6zu of %6zu differ, by %.1e of the largest at most\n", group.name, differing,
                    results.size(), difference / largest);
    return differing == 0 || difference <= kTolerance[static_cast<int>(group.bits)] * largest;
}

int main(int argc, char **argv) {
    const std::string_view mode = argc == 3 ? argv[1] : "";
    std::fstream file;
    if (!mode.empty()) file.open(argv[2], (mode == "--write" ? std::ios::out : std::ios::in) | std::ios::binary);
    bool ok = true;
    for (const Group &group : kAllGroups) {
        Results results;
        group.run(results);
        Results other(results.size());
        const auto size = static_cast<std::streamsize>(results.size() * sizeof(double));
        if (mode == "--write")
            file.write(reinterpret_cast<const char *>(results.data()), size);
        else if (mode == "--compare" && file.read(reinterpret_cast<char *>(other.data()), size))
            ok = within_tolerance(group, results, other) && ok;
        else if (mode.empty())
            print_fingerprint(group, results);
    }
    if (!mode.empty() && !file) std::fprintf(stderr, "digest: %s: cannot be written or read\n", argv[2]);
    return ok && std::fflush(stdout) == 0 && (mode.empty() || file) ? 0 : 1;
}
