#pragma once

#include <kivo/AcquisitionConfig.hpp>
#include <kivo/Deployment.hpp>
#include <kivo/Failure.hpp>
#include <kivo/c/sdk.h>
#include <kivo/c/session.h>

namespace kivo::c {

AcquisitionConfigValues configurationOf(const kivo_config* config);
Deployment deploymentOf(const kivo_deployment* deployment);

/// Valid as long as `failure`.
kivo_failure failureFor(const Failure& failure);

} // namespace kivo::c
