#ifndef KIVO_C_SCREENS_H
#define KIVO_C_SCREENS_H

#include <kivo/c/base.h>
#include <kivo/c/session.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The SDK's screens for a host that draws them with a toolkit of its own. A display holds the screens as data: the host
 * reads a snapshot as JSON, draws it, and hands a person's input back. All of this belongs to the main thread, on which
 * the main queue must run. */

/** A display, with a navigation stack whose first screen is empty. The host owns it. */
typedef struct kivo_display kivo_display;

/** A display of that size in points, without margins; null for a size that is not above 0. The host frees it. */
KIVO_C_EXPORT kivo_display* kivo_display_new(double width, double height);

/** Does nothing for null. A session that shows its screens there has no context any more: its next screen is answered
 * with `KIVO_CODE_UNKNOWN_ERROR`. The `user` of change notices is released. */
KIVO_C_EXPORT void kivo_display_free(kivo_display* display);

/** Changes the size, in points; the screens are laid out anew. */
KIVO_C_EXPORT kivo_status kivo_display_set_size(kivo_display* display, double width, double height);

/** How far a notch or bars of the host's reach into the display, in points. */
KIVO_C_EXPORT kivo_status kivo_display_set_margins(kivo_display* display, double top, double left, double bottom,
                                                   double right);

/** The reading size that the person has chosen, from 0 (extra small) over 3 (as designed, and at first) to 11. */
KIVO_C_EXPORT kivo_status kivo_display_set_reading_size(kivo_display* display, int32_t size);

/** The appearance that the person has chosen: 0 (light, and at first) or 1 (dark). Screens that are shown change. */
KIVO_C_EXPORT kivo_status kivo_display_set_appearance(kivo_display* display, int32_t appearance);

/** Has the session show its screens on the display; null for none. Screens that are shown stay where they are. */
KIVO_C_EXPORT kivo_status kivo_session_set_display(kivo_session* session, kivo_display* display);

/** Shows the screen that acquires `object`. The screen answers as often as it has something to tell: a person can
 * deliver a code and then close the screen. `answer.user` is released when the next call takes the place of this
 * answer. `KIVO_MISUSE` without a display, for an object that is for uploads only, and for `KIVO_OBJECT_OCR_SCAN`
 * before interface version 16: nothing is shown then, and the former answer stays. */
KIVO_C_EXPORT kivo_status kivo_session_acquire(kivo_session* session, kivo_object object, kivo_answer answer);

/** Takes every screen away, back to the empty one. */
KIVO_C_EXPORT kivo_status kivo_display_clear(kivo_display* display);

/** What a person sees now, as a JSON object, for the host to free; null after a mistake.
 *
 * "width", "height" and "screen" (the title of the topmost screen) describe the display. "views" lists the views in the
 * order in which they are drawn. Each view has:
 *
 * - "kind": "view", "label", "button", "field", "image", "scroll", "progress" or "camera"
 * - "frame": [x, y, width, height] in points, on the display
 * - "reachable": whether a person can operate the view
 * - "outlet": its name, "text", and "label", the text for screen readers where it is another one; left out where
 *   empty. The outlets of an alert's buttons are their texts
 * - "children": the views inside, likewise
 * - looks, left out where they have no effect: "alpha", "background", "tint", "color" (of the text),
 *   "border_color" (colours are "#rrggbbaa"), "font" ({"name", "size"}), "alignment" ("left", "center" or
 *   "right"), "corner_radius", "border_width", "clips", "image" ({"name", "file", "template"})
 * - "enabled" of a button and a field; "value", "placeholder", "focused" and "keyboard" ("standard", "ascii",
 *   "number" or "name") of a field; "animating" of a progress
 *
 * "elements" lists what a screen reader tells, in the order of reading and of the focus, without the views that are
 * covered or mere ornament. Each element has "role" ("text", "heading", "status", "button", "field", "image",
 * "progress" or "alert"), "name", "frame" and "states", a list of "focusable", "focused", "disabled", "busy",
 * "invalid", "required" and "modal"; and, left out where empty, the typed "value" of a field, "hint", which is told
 * last, and "outlet". A status is told when it comes or changes.
 *
 * A later release may add members. */
KIVO_C_EXPORT kivo_string* kivo_display_snapshot(kivo_display* display);

/** Calls `changed` on the main queue after what a person sees has changed: once for all changes that come together.
 * Null for no notices. Replaces the former function and releases its `user`. */
KIVO_C_EXPORT kivo_status kivo_display_on_change(kivo_display* display, kivo_work changed, void* user,
                                                 kivo_release release);

/* A person's input. Each function returns whether a view received it: a view that is hidden, covered or disabled
 * receives none. Whether the screen accepts a character is for the screen to say. A view is named by its outlet, and
 * looked for from the topmost screen's views down. */

/** A tap at a point of the display. */
KIVO_C_EXPORT bool kivo_display_touch(kivo_display* display, double x, double y);

/** A tap in the middle of a view, which is scrolled into sight before. */
KIVO_C_EXPORT bool kivo_display_tap(kivo_display* display, kivo_text outlet);

/** Types into a field, one character after the other; the keyboard may go on to the next field meanwhile. The field is
 * tapped before unless it has the keyboard; an empty outlet stands for the field that has it. */
KIVO_C_EXPORT bool kivo_display_type(kivo_display* display, kivo_text outlet, kivo_text text);

/** Pastes into a field, in the same way but all at once. */
KIVO_C_EXPORT bool kivo_display_paste(kivo_display* display, kivo_text outlet, kivo_text text);

/** The delete key, in the field that has the keyboard. */
KIVO_C_EXPORT bool kivo_display_delete_backward(kivo_display* display);

/** Scrolls the scroll view of that outlet so that its content begins `offset` points above its top. */
KIVO_C_EXPORT bool kivo_display_scroll(kivo_display* display, kivo_text outlet, double offset);

#ifdef __cplusplus
}
#endif

#endif
