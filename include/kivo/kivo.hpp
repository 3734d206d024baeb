#pragma once

/// Everything a host needs, in one header.

#include <kivo/AcquisitionConfig.hpp>
#include <kivo/AcquisitionObject.hpp>
#include <kivo/ActivationResponse.hpp>
#include <kivo/Completions.hpp>
#include <kivo/Deployment.hpp>
#include <kivo/Export.hpp>
#include <kivo/Failure.hpp>
#include <kivo/FinalStatusVC.hpp>
#include <kivo/IdvEvents.hpp>
#include <kivo/IdvResult.hpp>
#include <kivo/KivoAPI.hpp>
#include <kivo/KivoAPIProvider.hpp>
#include <kivo/KivoSDK.hpp>
#include <kivo/LogLevel.hpp>
#include <kivo/LuOTPView.hpp>
#include <kivo/ObjCResult.hpp>
#include <kivo/ReadIDUIResourcesWrapper.hpp>
#include <kivo/ResponseCode.hpp>
#include <kivo/SDKEnv.hpp>
#include <kivo/SdkVersions.hpp>
#include <kivo/ThemeCustomization.hpp>
#include <kivo/ZorFrameworkWrapper.hpp>
#include <kivo/platform/FrameCamera.hpp>
#include <kivo/platform/RunLoop.hpp>
#include <kivo/platform/Services.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/ViewController.hpp>
#include <kivo/platform/ui/Window.hpp>
