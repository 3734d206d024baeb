#ifndef KIVO_C_SERVICES_H
#define KIVO_C_SERVICES_H

#include <kivo/c/base.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Services that a host brings in place of the platform's own. Install them on the main thread before the first session
 * is opened: a service that is in use stays in use. A table is copied, its functions and its `user` are used until the
 * process ends, and its functions must not throw. */

/** A host's own main queue, such as the loop of its toolkit. kivo_main_run and its like then have nothing to do. */
typedef struct kivo_main_queue {
    /** The size of this structure as the host knows it, and the pointer that each function is called with. */
    size_t size;
    void* user;
    /** Has `work(argument)` called once on the host's main thread, no sooner than `delay_nanoseconds` from now. Work
     * with equal delays runs in the order in which it came. Returns at once. Called on any thread; must not be null. */
    void (*post)(void* user, uint64_t delay_nanoseconds, kivo_work work, void* argument);
    /** Whether the calling thread is the main thread. Called on any thread; must not be null. */
    bool (*is_current)(void* user);
} kivo_main_queue;

/** Puts the host's main queue in force. */
KIVO_C_EXPORT kivo_status kivo_main_queue_install(const kivo_main_queue* queue);

/** The answer of a host's keychain. */
typedef enum kivo_keychain_status KIVO_INT32 {
    KIVO_KEYCHAIN_OK = 0,
    KIVO_KEYCHAIN_NOT_FOUND = 1,
    KIVO_KEYCHAIN_FAILED = 2,
} kivo_keychain_status;

/** Takes the value of an item over, once, during `get`; at most 16 MiB. */
typedef void (*kivo_keychain_take)(void* taker, const void* bytes, size_t length);

/** A host's own store for small secrets: the session and the activation code. An item has a name, which is a service
 * and an account, and a value of any bytes. Functions are called on any thread, also on several at once, and none may
 * be null. A change is durable when the function returns. */
typedef struct kivo_keychain {
    /** The size of this structure as the host knows it, and the pointer that each function is called with. */
    size_t size;
    void* user;
    /** Stores a value, or replaces the former value. */
    kivo_keychain_status (*set)(void* user, kivo_text service, kivo_text account, const void* bytes, size_t length);
    /** Hands the value to `take`, with `taker`. */
    kivo_keychain_status (*get)(void* user, kivo_text service, kivo_text account, kivo_keychain_take take, void* taker);
    /** Deletes the item beyond recovery. */
    kivo_keychain_status (*remove)(void* user, kivo_text service, kivo_text account);
} kivo_keychain;

/** Puts the host's keychain in force. */
KIVO_C_EXPORT kivo_status kivo_keychain_install(const kivo_keychain* keychain);

#ifdef __cplusplus
}
#endif

#endif
