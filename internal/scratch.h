// Scratch memory of one call, freed at the end of its scope.  It comes from malloc, because no exception may cross the C
// interface.
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

// Room for count objects; null without memory, and where their number of bytes does not fit a size.
template <typename T>
Scratch<T> scratch(std::size_t count) {
    if (count > SIZE_MAX / sizeof(T)) return nullptr;
    static_assert(alignof(T) <= alignof(std::max_align_t));
    return Scratch<T>(static_cast<T *>(std::malloc(count * sizeof(T))));
}

}  // namespace mensura
