#ifndef KIVO_C_THEME_H
#define KIVO_C_THEME_H

#include <kivo/c/base.h>
#include <kivo/c/session.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The looks and texts of a session's screens, by the names of the properties in kivo/ThemeCustomization.hpp, such as
 * "screenTitleColor". Those of the close buttons begin with "zorCloseButtonAppearance.", and those of the vendor's
 * document screens, which all sessions share, with "passportScanViewCustomization.". A screen reads the theme when it
 * appears. */

/** The form of a property's value. */
typedef enum kivo_property_kind KIVO_INT32 {
    KIVO_PROPERTY_UNKNOWN = 0, /**< There is no property of that name. */
    KIVO_PROPERTY_TEXT = 1,
    /** A length in points, a count, a flag (0 or 1), or the place of an enumerator in its enumeration. */
    KIVO_PROPERTY_NUMBER = 2,
    KIVO_PROPERTY_COLOR = 3,
    KIVO_PROPERTY_FONT = 4,
} kivo_property_kind;

/** A colour in sRGB; each channel from 0 to 1. All members stay as they are in all releases. */
typedef struct kivo_color {
    /** From 0 to 1; `alpha` is 1 for an opaque colour. */
    double red;
    double green;
    double blue;
    double alpha;
} kivo_color;

/** The names of the properties, from index 0; empty beyond the last. Any thread. The text is never freed. */
KIVO_C_EXPORT kivo_text kivo_theme_property(size_t index);

/** The form of the property of that name. */
KIVO_C_EXPORT kivo_property_kind kivo_theme_property_kind(kivo_text name);

/** Sets a text. An empty text leaves the layout's own text in place. */
KIVO_C_EXPORT kivo_status kivo_theme_set_text(kivo_session* session, kivo_text name, kivo_text value);

/** The text, for the host to free; null after a mistake. */
KIVO_C_EXPORT kivo_string* kivo_theme_text(kivo_session* session, kivo_text name);

/** Sets a number. A fraction for a count, or a number that the property cannot have, is a mistake. */
KIVO_C_EXPORT kivo_status kivo_theme_set_number(kivo_session* session, kivo_text name, double value);

/** Reads a number; NaN where none is set, and after a mistake. */
KIVO_C_EXPORT double kivo_theme_number(kivo_session* session, kivo_text name);

/** Sets a colour. A channel that is not from 0 to 1 is a mistake. */
KIVO_C_EXPORT kivo_status kivo_theme_set_color(kivo_session* session, kivo_text name, kivo_color value);

/** Reads a colour; clear where none is set, and after a mistake. */
KIVO_C_EXPORT kivo_color kivo_theme_color(kivo_session* session, kivo_text name);

/** Sets a font by the name of its typeface and its size in points; empty for the system's typeface. `KIVO_FAILED`, and
 * no change, when the typeface is not installed. */
KIVO_C_EXPORT kivo_status kivo_theme_set_font(kivo_session* session, kivo_text name, kivo_text typeface,
                                              double point_size);

/** The typeface, for the host to free, and its size in `point_size`, which may be null; empty and 0 where the system's
 * font of the usual size is used. Null after a mistake. */
KIVO_C_EXPORT kivo_string* kivo_theme_font(kivo_session* session, kivo_text name, double* point_size);

#ifdef __cplusplus
}
#endif

#endif
