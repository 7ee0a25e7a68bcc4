// What a function from samples to as many results writes, and that it writes nothing else.
#pragma once

#include <algorithm>
#include <vector>

#include "expect.h"

namespace support {

// run(x, y, n) writes what is expected and leaves the numbers around it alone, wherever x and y lie: so many doubles
// beside the alignment of vectors.
void expect_written(const std::vector<double> &x, const std::vector<double> &expected, auto run,
                    const std::vector<int> &shifts = {0, 1, 2, 3}) {
    constexpr double kMark = -77.7;  // no result
    for (const int from : shifts)
        for (const int to : shifts) {
            std::vector<double> in(static_cast<std::size_t>(from)), out(x.size() + 8, kMark), whole = out;
            in.insert(in.end(), x.begin(), x.end());
            std::ranges::copy(expected, whole.begin() + 1 + to);
            run(in.data() + from, out.data() + 1 + to, static_cast<int>(x.size()));
            ASSERT_SAME_BITS(out, whole) << x.size() << " samples, shifted by " << from << ", results by " << to;
        }
}

}  // namespace support
