#pragma once

#include <kivo/Deployment.hpp>

#include <memory>

namespace kivo {

/// `Deployment::current()` without a copy.
std::shared_ptr<const Deployment> deploymentInForce();

} // namespace kivo
