#pragma once

/// The whole interface for Objective-C hosts, in one header. Compile with clang, link `Kivo::objc`; no ARC.

#import <kivo/objc/AcquisitionConfig.h>
#import <kivo/objc/AcquisitionObject.h>
#import <kivo/objc/ActivationResponse.h>
#import <kivo/objc/CodeTextFieldStyle.h>
#import <kivo/objc/DocumentListConfigurationStatus.h>
#import <kivo/objc/FinalStatusVC.h>
#import <kivo/objc/IdvEvents.h>
#import <kivo/objc/IdvResult.h>
#import <kivo/objc/KivoAPIProvider.h>
#import <kivo/objc/KivoBundle.h>
#import <kivo/objc/KivoColor.h>
#import <kivo/objc/KivoContentSizeCategory.h>
#import <kivo/objc/KivoControls.h>
#import <kivo/objc/KivoDeployment.h>
#import <kivo/objc/KivoFont.h>
#import <kivo/objc/KivoImage.h>
#import <kivo/objc/KivoMainQueue.h>
#import <kivo/objc/KivoNavigationController.h>
#import <kivo/objc/KivoObject.h>
#import <kivo/objc/KivoSDK.h>
#import <kivo/objc/KivoUserInterfaceStyle.h>
#import <kivo/objc/KivoView.h>
#import <kivo/objc/KivoViewController.h>
#import <kivo/objc/KivoWindow.h>
#import <kivo/objc/LogLevel.h>
#import <kivo/objc/LuOTPView.h>
#import <kivo/objc/ObjCResult.h>
#import <kivo/objc/SDKEnv.h>
#import <kivo/objc/SdkVersions.h>
#import <kivo/objc/ThemeCustomization.h>
#import <kivo/objc/VendorLooks.h>
#import <kivo/objc/ZorCloseButtonAppearance.h>
#import <kivo/objc/ZorFrameworkWrapper.h>
