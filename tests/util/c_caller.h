#ifndef ORVANE_TESTS_UTIL_C_CALLER_H
#define ORVANE_TESTS_UTIL_C_CALLER_H

#ifdef __cplusplus
extern "C" {
#endif

/* Uses every group of calls of the utility library from C; returns the line of the first check that fails, or
 * 0 when all hold. */
int call_from_c(void);

#ifdef __cplusplus
}
#endif

#endif
