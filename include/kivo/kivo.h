#ifndef KIVO_KIVO_H
#define KIVO_KIVO_H

/** \file
 * The C interface of Kivo: everything that a host needs that is not written in C++.
 *
 * Rules that hold for every function, unless its comment says otherwise:
 *
 * - Call on the host's main thread. "Any thread" is said where it is allowed.
 * - A mistake in a call (a null or foreign handle, a text that is not UTF-8, an integer that no enumerator has)
 *   changes nothing. The return value says so, and a report, by default on standard error,
 *   names the function and the mistake.
 * - Texts and structures that the host passes are read during the call and belong to the host.
 * - A structure that the host fills begins with its size, `{.size = sizeof variable}`: a later release may add
 *   members at the end. A member that the host does not set is zero, and zero is the default.
 * - A function that the host passes is called with the `user` pointer that comes with the function. `release`,
 *   which may be null, is called exactly once with that pointer, when the library will not use it again, also when
 *   the call was a mistake. Neither function may throw or jump out of the library.
 * - What the host must free has a function for it, whose name ends in `_free`. Sessions belong to the process.
 */

#include <kivo/c/base.h>
#include <kivo/c/codes.h>
#include <kivo/c/document_reader.h>
#include <kivo/c/face_scanner.h>
#include <kivo/c/main_queue.h>
#include <kivo/c/screens.h>
#include <kivo/c/sdk.h>
#include <kivo/c/services.h>
#include <kivo/c/session.h>
#include <kivo/c/theme.h>

#endif
