#pragma once

#include <kivo/IdvResult.hpp>

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

} // namespace kivo
