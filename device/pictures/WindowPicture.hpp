#pragma once

#include <QImage>

namespace kivo::device::pictures {

/// The window of kivo-device in the middle of a session, as large as a small laptop's display.
QImage windowPicture(bool isDark);

} // namespace kivo::device::pictures
