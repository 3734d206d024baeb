#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/Window.hpp>

#include <string>
#include <vector>

namespace kivo::device {

/// The contrast between a text and the pixels behind the text.
struct TextContrast {
    /// The text as it is drawn.
    std::string text;
    /// The least contrast of the letters' colour to a pixel behind the text, from 1 to 21 in the sense of the Web
    /// Content Accessibility Guidelines.
    double contrast = 0;
    /// The contrast that the text needs: 7, or 4.5 where the text has at least 24 points or belongs to a button or an
    /// empty field. 0 for a text that needs none, because its control is disabled or lies behind a veil.
    double least = 0;
};

/// The contrasts of all texts that are in sight on the topmost screen, by the pixels as they are drawn: backgrounds,
/// pictures, translucent views and veils count. Lays the window out first. Main thread.
KIVO_EXPORT std::vector<TextContrast> textContrasts(platform::Window& window);

} // namespace kivo::device
