// Counts what the process allocates, the library included, and can refuse it.  To be included once in a program.
#pragma once

#include <climits>
#include <cstddef>

#if defined(__has_feature)
#define SANITIZED (__has_feature(address_sanitizer) || __has_feature(thread_sanitizer))
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SANITIZED 1
#else
#define SANITIZED 0
#endif

[[maybe_unused]] static thread_local int allocations = 0;    // so far
[[maybe_unused]] static thread_local int alive = 0;          // of them, not freed
[[maybe_unused]] static thread_local int granted = INT_MAX;  // allocations before memory runs out

#if defined(__GLIBC__) && !SANITIZED  // a sanitizer brings its own malloc
#define COUNTS_ALLOCATIONS 1

extern "C" void *__libc_malloc(std::size_t size);
extern "C" void *__libc_calloc(std::size_t count, std::size_t size);
extern "C" void *__libc_memalign(std::size_t alignment, std::size_t size);
extern "C" void __libc_free(void *p);

static bool grants() {
    ++allocations;
    const bool granting = --granted >= 0;
    alive += granting;
    return granting;
}
extern "C" void *malloc(std::size_t size) noexcept { return grants() ? __libc_malloc(size) : nullptr; }
extern "C" void *calloc(std::size_t count, std::size_t size) noexcept {
    return grants() ? __libc_calloc(count, size) : nullptr;
}
extern "C" void *aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return grants() ? __libc_memalign(alignment, size) : nullptr;
}
extern "C" void free(void *p) noexcept {
    alive -= p != nullptr;
    __libc_free(p);
}

#endif
