// Scratch memory of one call: from malloc, because no exception may cross the C interface; freed at the end of its
// scope.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace mensura {

struct Free {
    void operator()(void *p) const { std::free(p); }
};

template <typename T>
using Scratch = std::unique_ptr<T[], Free>;

// Room for count objects, or null; a count whose bytes do not fit a size gets null.
template <typename T>
Scratch<T> scratch(std::size_t count) {
    if (count > SIZE_MAX / sizeof(T)) return nullptr;
    static_assert(alignof(T) <= alignof(std::max_align_t));
    return Scratch<T>(static_cast<T *>(std::malloc(count * sizeof(T))));
}

}  // namespace mensura
