#include <kivo/platform/ui/Font.hpp>
#include <kivo/platform/ui/View.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace kivo::platform {
namespace {

/// The body text style, from `extraSmall` up.
constexpr std::array bodySizes{14.0, 15.0, 16.0, 17.0, 19.0, 21.0, 23.0, 28.0, 33.0, 40.0, 47.0, 53.0};

double bodySize(ContentSizeCategory category) {
    return bodySizes[std::min(static_cast<std::size_t>(category), bodySizes.size() - 1)];
}

} // namespace

Font FontMetrics::scaledFont(Font base) {
    base.isScaled = true;
    return base;
}

double FontMetrics::pointSize(const Font& font, ContentSizeCategory category) {
    return font.isScaled ? font.pointSize * bodySize(category) / bodySize(ContentSizeCategory::large) : font.pointSize;
}

ContentSizeCategory View::contentSizeCategory() const {
    auto category = superview_ ? superview_->contentSizeCategory() : ContentSizeCategory::large;
    category = contentSizeOverride_.value_or(category);
    category = std::max(category, minimumCategory_.value_or(category));
    return std::min(category, maximumCategory_.value_or(category));
}

void View::setMinimumContentSizeCategory(std::optional<ContentSizeCategory> category) {
    if (std::exchange(minimumCategory_, category) != category) {
        tellContentSizeCategoryChange();
    }
}

void View::setMaximumContentSizeCategory(std::optional<ContentSizeCategory> category) {
    if (std::exchange(maximumCategory_, category) != category) {
        tellContentSizeCategoryChange();
    }
}

void View::setContentSizeOverride(std::optional<ContentSizeCategory> category) {
    if (std::exchange(contentSizeOverride_, category) != category) {
        tellContentSizeCategoryChange();
    }
}

void View::tellContentSizeCategoryChange() {
    contentSizeCategoryDidChange();
    for (const auto& subview : subviews_) {
        subview->tellContentSizeCategoryChange();
    }
}

} // namespace kivo::platform
