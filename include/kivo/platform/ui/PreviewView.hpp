#pragma once

#include <kivo/platform/CaptureSession.hpp>
#include <kivo/platform/ui/View.hpp>

#include <memory>
#include <utility>

namespace kivo::platform {

/// A view with a camera's picture behind its subviews.
///
/// The code that draws the tree asks the session for its preview with every frame. The picture fills the view without
/// distortion, and is cut off at two sides where it does not fit. Without a session or a picture the view is black.
class KIVO_EXPORT PreviewView : public View {
public:
    /// The session whose pictures the view shows; null for none.
    const std::shared_ptr<CaptureSession>& previewSession() const { return previewSession_; }

    void setPreviewSession(std::shared_ptr<CaptureSession> session) { previewSession_ = std::move(session); }

private:
    std::shared_ptr<CaptureSession> previewSession_;
};

} // namespace kivo::platform
