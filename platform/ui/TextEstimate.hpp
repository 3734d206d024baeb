#pragma once

#include <kivo/platform/ui/Geometry.hpp>

#include <string_view>
#include <vector>

namespace kivo::platform {

/// An estimate of the size of `text`, the same on every machine. Each character counts as narrow, common, broad, East
/// Asian wide, or without a width. Lines break between words, and inside a word wider than `widthLimit`.
Size estimateText(std::string_view text, double pointSize, double widthLimit);

/// The parts of `text` inside which no line breaks: its words, and each East Asian character.
std::vector<std::string_view> unbrokenParts(std::string_view text);

} // namespace kivo::platform
