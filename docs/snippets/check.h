// What the snippets check of themselves: like assert, but in release builds too.
#ifndef MENSURA_SNIPPETS_CHECK_H
#define MENSURA_SNIPPETS_CHECK_H

#include <stdio.h>
#include <stdlib.h>

#define CHECK(condition)                                                                  \
    do {                                                                                  \
        if (!(condition)) {                                                               \
            fprintf(stderr, "%s:%d: %s does not hold\n", __FILE__, __LINE__, #condition); \
            exit(EXIT_FAILURE);                                                           \
        }                                                                                 \
    } while (0)

#endif
