#include "VendorText.hpp"

#include <kivo/platform/ui/LocalizedText.hpp>

#include <algorithm>

namespace kivo::simulator {

std::string VendorText::shown(long number) const {
    auto text = platform::localizedText(english());
    if (text == english()) {
        const auto whole = platform::textLanguage();
        const auto* const language = std::ranges::find(languages, whole.substr(0, whole.find_first_of("_-")));
        text = (*row_)[language == languages.end() ? 0 : static_cast<std::size_t>(language - languages.begin())];
    }
    if (const auto place = text.find("{}"); place != std::string::npos) {
        text.replace(place, 2, std::to_string(number));
    }
    return text;
}

} // namespace kivo::simulator
