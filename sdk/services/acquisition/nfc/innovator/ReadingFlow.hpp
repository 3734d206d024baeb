#pragma once

#include "Models/ActivationSessionModel.hpp"

#include <kivo/ThemeCustomization.hpp>
#include <kivo/platform/ReadID.hpp>

#include <memory>

namespace kivo {

/// What the vendor is to do for this session, in this theme's looks; either may be null.
std::shared_ptr<platform::readid::NFCWithAccessControlFlow> makeReadingFlow(const ActivationResponse* session,
                                                                            const ThemeCustomization* theme);

} // namespace kivo
