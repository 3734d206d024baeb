#include <kivo/ReadIDUIResourcesWrapper.hpp>
#include <kivo/ThemeCustomization.hpp>

#include <utility>

namespace kivo {
namespace {

platform::readid::UIResources& resources() {
    return *ThemeCustomization::passportScanViewCustomization();
}

} // namespace

double ReadIDUIResourcesWrapper::textSize() const {
    return resources().textSize;
}

void ReadIDUIResourcesWrapper::setTextSize(double size) {
    resources().textSize = size;
}

platform::Font ReadIDUIResourcesWrapper::buttonFont() const {
    return resources().buttonFont.value_or(platform::Font{});
}

void ReadIDUIResourcesWrapper::setButtonFont(platform::Font font) {
    resources().buttonFont = std::move(font);
}

platform::Font ReadIDUIResourcesWrapper::titleFont() const {
    return resources().titleFont.value_or(platform::Font{});
}

void ReadIDUIResourcesWrapper::setTitleFont(platform::Font font) {
    resources().titleFont = std::move(font);
}

platform::Font ReadIDUIResourcesWrapper::textFont() const {
    return resources().textFont.value_or(platform::Font{});
}

void ReadIDUIResourcesWrapper::setTextFont(platform::Font font) {
    resources().textFont = std::move(font);
}

double ReadIDUIResourcesWrapper::buttonTextSize() const {
    return resources().buttonTextSize;
}

void ReadIDUIResourcesWrapper::setButtonTextSize(double size) {
    resources().buttonTextSize = size;
}

double ReadIDUIResourcesWrapper::buttonHeight() const {
    return resources().buttonHeight;
}

void ReadIDUIResourcesWrapper::setButtonHeight(double height) {
    resources().buttonHeight = height;
}

bool ReadIDUIResourcesWrapper::isDynamicTypeEnabled() const {
    return resources().isDynamicTypeEnabled;
}

void ReadIDUIResourcesWrapper::setIsDynamicTypeEnabled(bool enabled) {
    resources().isDynamicTypeEnabled = enabled;
}

std::string ReadIDUIResourcesWrapper::customStringTableName() const {
    return resources().customStringTableName.value_or("");
}

// The empty text stands for an absent table when read and when written.
void ReadIDUIResourcesWrapper::setCustomStringTableName(std::string name) {
    resources().customStringTableName = name.empty() ? std::nullopt : std::optional{std::move(name)};
}

} // namespace kivo
