#pragma once

#include <QFont>
#include <QString>

namespace kivo::device {

/// The text with a line separator at each place where a line ends, so that the lines have like lengths; the text as it
/// is when it has one line, more than four, or line breaks of its own. Balancing adds no line. A Japanese text breaks
/// between phrases where the number of lines allows it. The results are kept for the next time. Main thread.
QString balanced(const QString& text, const QFont& font, double width);

} // namespace kivo::device
