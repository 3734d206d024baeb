#ifndef KIVO_C_MAIN_QUEUE_H
#define KIVO_C_MAIN_QUEUE_H

#include <kivo/c/base.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The library's main queue. Answers come on it unless the host chooses otherwise, and screens run on it. The first
 * thread that runs or drains the queue becomes its thread, the main thread. A host without a loop of its own calls
 * kivo_main_run; a host with a loop polls kivo_main_descriptor and calls kivo_main_drain. */

/** Runs what is on the queue as it comes, until kivo_main_stop. */
KIVO_C_EXPORT kivo_status kivo_main_run(void);

/** Runs what is on the queue until `is_done` returns true or `limit_milliseconds` have passed; returns whether it is
 * done. `is_done` is asked on the main thread after each piece of work; it must not be null. */
KIVO_C_EXPORT bool kivo_main_run_until(bool (*is_done)(void* user), void* user, uint32_t limit_milliseconds);

/** Ends kivo_main_run; without a run in progress the next one ends at once. Any thread. */
KIVO_C_EXPORT kivo_status kivo_main_stop(void);

/** Runs what is due now and returns how many pieces of work that was. Never waits. */
KIVO_C_EXPORT size_t kivo_main_drain(void);

/** The descriptor that becomes readable when kivo_main_drain has something to do. The library owns it: poll it, neither
 * read nor close it. -1 when there is none. Any thread. */
KIVO_C_EXPORT int kivo_main_descriptor(void);

/** Runs `work` on the main queue, no sooner than `delay_milliseconds` from now. Any thread. */
KIVO_C_EXPORT kivo_status kivo_main_post(uint32_t delay_milliseconds, kivo_work work, void* user, kivo_release release);

#ifdef __cplusplus
}
#endif

#endif
