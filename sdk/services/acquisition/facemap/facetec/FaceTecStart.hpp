#pragma once

#include "Models/ActivationSessionModel.hpp"

#include <functional>

namespace kivo {

/// Starts the vendor's library with the session's keys, in the mode that the deployment names, and chooses its
/// language. The session may be null.
///
/// `completion` is called once, on any thread; without a library at once, with false.
void startFaceTec(const ActivationResponse* session, std::function<void(bool isReady)> completion);

} // namespace kivo
