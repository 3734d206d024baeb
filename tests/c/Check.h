/* Counts and prints the conditions that do not hold. Each program of this folder is one file, and includes this once.
 */
#ifndef KIVO_TESTS_C_CHECK_H
#define KIVO_TESTS_C_CHECK_H

#include <stdio.h>

static int faults = 0;

#define CHECK(condition)                                                                                               \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            printf("line %d: %s\n", __LINE__, #condition);                                                             \
            faults += 1;                                                                                               \
        }                                                                                                              \
    } while (0)

#endif
