#ifndef KIVO_C_BASE_H
#define KIVO_C_BASE_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>

/** Enumerations are integers of 32 bits, in C++ by declaration. */
#ifdef __cplusplus
#define KIVO_INT32 : int32_t
extern "C" {
#else
#define KIVO_INT32
#endif

#if defined(__GNUC__)
#define KIVO_C_EXPORT __attribute__((visibility("default")))
#else
#define KIVO_C_EXPORT
#endif

/** UTF-8 bytes and their number. `{NULL, 0}` is the empty text. A text from the library is never null and is followed
 * by a zero byte, so that `data` is a C string. Both members stay as they are in all releases. */
typedef struct kivo_text {
    /** The bytes, and their number without the zero that follows. */
    const char* data;
    size_t length;
} kivo_text;

/** A literal as a text: `KIVO_TEXT("18")`. */
#ifdef __cplusplus
#define KIVO_TEXT(literal) kivo_text{"" literal, sizeof(literal) - 1}
#else
#define KIVO_TEXT(literal) ((kivo_text){"" literal, sizeof(literal) - 1})
#endif

/** A C string as a text, valid as long as the string; null gives the empty text. */
static inline kivo_text kivo_text_of(const char* string) {
    kivo_text text = {string, 0};
    if (string) {
        text.length = strlen(string);
    }
    return text;
}

/** The outcome of a call that is answered at once. */
typedef enum kivo_status KIVO_INT32 {
    KIVO_OK = 0,
    /** The call is a mistake of the host; nothing has happened. */
    KIVO_MISUSE = 1,
    KIVO_NO_MEMORY = 2,
    /** The system refused something else, such as a thread. */
    KIVO_FAILED = 3,
} kivo_status;

/** The enumerator's name, such as "KIVO_MISUSE"; empty for another integer. Any thread. The text is never freed. */
KIVO_C_EXPORT kivo_text kivo_status_name(kivo_status status);

/** A text that the library hands over; the host frees it. */
typedef struct kivo_string kivo_string;

/** The text, valid until the string is freed; empty for null. Any thread. */
KIVO_C_EXPORT kivo_text kivo_string_text(const kivo_string* string);

/** Does nothing for null. Any thread. */
KIVO_C_EXPORT void kivo_string_free(kivo_string* string);

/** Work that the library does for the host later. */
typedef void (*kivo_work)(void* user);

/** Tells the host that the library will not use `user` again. Called on any thread. */
typedef void (*kivo_release)(void* user);

#ifdef __cplusplus
}
#endif

#endif
