#pragma once

#include <QString>
#include <string>

namespace kivo::device::app {

/// The body of a request or an answer, indented for reading, without the values that are secret or a person's: codes,
/// keys, scans and images. A body that is no JSON object is told by its length alone.
QString withoutSecrets(const std::string& body);

} // namespace kivo::device::app
