#include <ctime>

#include "input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::clock_t start = std::clock();
    fuzz::test(input);
    fuzz::check(std::clock() - start < CLOCKS_PER_SEC);  // of the processor: others may be at work on it
    return 0;
}
