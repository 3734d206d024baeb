#pragma once

#include <kivo/IdvResult.hpp>
#include <kivo/ThemeCustomization.hpp>

#include <memory>

namespace kivo {

/// Hears how the face liveness screen ended. Main thread.
class LivenessCheckVCDelegate {
public:
    virtual ~LivenessCheckVCDelegate() = default;

    virtual void livenessCheckDidComplete(IdvOutcome result) = 0;
};

/// Hears how the ID scan screen ended. Main thread.
class OCRScanVCDelegate {
public:
    virtual ~OCRScanVCDelegate() = default;

    virtual void ocrScanDidComplete(IdvOutcome result) = 0;
};

/// The ID scan screen as another screen that presents it knows it.
class OCRScanScreen {
public:
    virtual ~OCRScanScreen() = default;

    virtual void setDelegate(std::weak_ptr<OCRScanVCDelegate> delegate) = 0;

    /// Null leaves the storyboard's looks and texts.
    virtual void setTheme(std::shared_ptr<ThemeCustomization> theme) = 0;
};

/// Hears that the final status screen has gone. Main thread.
class FinalStatusVCDelegate {
public:
    virtual ~FinalStatusVCDelegate() = default;

    virtual void finalStatusDidDisappear() = 0;
};

} // namespace kivo
