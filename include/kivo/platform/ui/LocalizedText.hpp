#pragma once

#include <kivo/Export.hpp>

#include <string>
#include <string_view>

namespace kivo::platform {

/// The translation of a text of the SDK's own, which is its own key, into the person's language: the host's, else the
/// SDK's, else the text itself. Any thread.
KIVO_EXPORT std::string localizedText(std::string_view text);

/// The language of the texts on the screens, such as "de" or "pt_BR": the host's, else the SDK's; empty when unknown.
/// Any thread.
KIVO_EXPORT std::string textLanguage();

} // namespace kivo::platform
