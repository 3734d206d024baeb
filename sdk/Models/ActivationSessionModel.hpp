#pragma once

#include <kivo/ActivationResponse.hpp>

#include <string>
#include <string_view>

namespace kivo {

/// A setting's text; empty when it is missing.
const std::string& settingIn(const ActivationResponse::Settings& settings, std::string_view key);

} // namespace kivo
