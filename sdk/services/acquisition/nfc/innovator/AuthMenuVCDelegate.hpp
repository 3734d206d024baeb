#pragma once

#include <kivo/IdvResult.hpp>

namespace kivo {

/// Hears how the document screen ended. Main thread.
class AuthMenuVCDelegate {
public:
    virtual ~AuthMenuVCDelegate() = default;

    virtual void documentFlowDidComplete(IdvOutcome result) = 0;

    /// The document screen passes on the outcome of an ID scan that it presented itself.
    virtual void ocrFlowDidComplete(IdvOutcome result) = 0;
};

} // namespace kivo
