// Fingerprints of the bits that the families give on seeded data, to compare machines, compilers and options.
//
//     digest                   for each family its name, its kind (families.h), FNV-1a of the doubles
//     digest --write FILE      all the doubles, as memory has them
//     digest --compare FILE    families whose doubles differ from those of such a file: how many, and by how much; 1 if
//                              that is beyond the tolerance of their kind
#include <algorithm>
#include <bit>
#include <cmath>
#include <compare>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string_view>

#include "families.h"

namespace {

using Bytes = std::streamsize;

std::uint64_t bits(double x) { return std::bit_cast<std::uint64_t>(std::isnan(x) ? NAN : x); }  // a NaN's sign is open

void print_fingerprint(const Family &family, const Results &results) {
    std::uint64_t hash = 14695981039346656037U;
    for (const double x : results)
        for (int byte = 0; byte < 64; byte += 8) hash = (hash ^ (bits(x) >> byte & 255)) * 1099511628211U;
    constexpr const char *kKinds[] = {"exact", "libm", "roots"};
    std::printf("%-28s %-5s %016llx\n", family.name, kKinds[static_cast<int>(family.bits)],
                static_cast<unsigned long long>(hash));
}

// Of the largest value in a family.  Designs made from the roots of a polynomial lose up to half of their digits.
constexpr double kTolerance[] = {0, 4e-16, 1e-8};

bool within_tolerance(const Family &family, Results results, Results other) {
    if (family.bits == Family::Bits::kRoots)
        for (Results *const values : {&results, &other})
            std::ranges::sort(*values, [](double a, double b) { return std::is_lt(std::strong_order(a, b)); });
    std::size_t differing = 0;
    double largest = 0, difference = 0;
    for (std::size_t i = 0; i < results.size(); ++i) {
        differing += bits(results[i]) != bits(other[i]);
        largest = std::max(largest, std::fabs(results[i]));
        if (bits(results[i]) == bits(other[i])) continue;
        const double apart = std::fabs(results[i] - other[i]);
        difference = std::isfinite(apart) ? std::max(difference, apart) : HUGE_VAL;
    }
    if (differing > 0)
        std::printf("%-28s %6zu of %6zu differ, by %.1e of the largest at most\n", family.name, differing,
                    results.size(), difference / largest);
    return differing == 0 || difference <= kTolerance[static_cast<int>(family.bits)] * largest;
}

}  // namespace

int main(int argc, char **argv) {
    const std::string_view mode = argc == 3 ? argv[1] : "";
    std::fstream file;
    if (!mode.empty()) file.open(argv[2], (mode == "--write" ? std::ios::out : std::ios::in) | std::ios::binary);
    bool ok = true;
    for (const Family &family : kAllFamilies) {
        Results results;
        family.run(results);
        Results other(results.size());
        const auto size = static_cast<Bytes>(results.size() * sizeof(double));
        if (mode == "--write")
            file.write(reinterpret_cast<const char *>(results.data()), size);
        else if (mode == "--compare" && file.read(reinterpret_cast<char *>(other.data()), size))
            ok = within_tolerance(family, results, other) && ok;
        else if (mode.empty())
            print_fingerprint(family, results);
    }
    if (!mode.empty() && !file) std::fprintf(stderr, "digest: %s: cannot be written or read\n", argv[2]);
    return ok && std::fflush(stdout) == 0 && (mode.empty() || file) ? 0 : 1;
}
