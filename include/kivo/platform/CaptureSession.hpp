#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/DispatchQueue.hpp>
#include <kivo/platform/VideoFrame.hpp>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kivo::platform {

/// The types of code that can be read.
enum class MetadataObjectType { qr, ean8, ean13, pdf417 };

/// An object found in a camera's picture.
struct MetadataObject {
    /// Absent when the object is no machine-readable code.
    std::optional<MetadataObjectType> type;
    /// The code's text; absent when the code could not be read. The text of a code that names no other character set
    /// counts as UTF-8 and is passed on unchecked: the receiver must check that it is well-formed.
    std::optional<std::string> text;
};

/// Receives the objects that were found, on the queue that `setDelegate` names.
class KIVO_EXPORT CaptureMetadataOutputDelegate {
public:
    virtual ~CaptureMetadataOutputDelegate() = default;

    /// Called for each picture in which objects were found, with all of them.
    virtual void didOutput(const std::vector<MetadataObject>& objects) = 0;
};

/// The picture source of a session: a camera that was opened.
class KIVO_EXPORT CaptureInput {
public:
    virtual ~CaptureInput() = default;
};

/// Looks for codes in a session's pictures.
class KIVO_EXPORT CaptureMetadataOutput {
public:
    virtual ~CaptureMetadataOutput() = default;

    /// Names the receiver, which is held weakly, with the queue for its calls, and the types of objects that it
    /// receives.
    virtual void setDelegate(std::weak_ptr<CaptureMetadataOutputDelegate> delegate,
                             std::shared_ptr<DispatchQueue> queue) = 0;
    virtual void setObjectTypes(std::vector<MetadataObjectType> types) = 0;
};

/// The picture of a camera to show.
struct PreviewFrame {
    /// The newest picture; null before the first one. It is shared with the session: nothing is copied.
    std::shared_ptr<const VideoFrame> picture;
    /// Grows with every picture, so that the drawing code knows whether the picture is new.
    std::uint64_t number = 0;
};

/// A camera at work. Main thread.
///
/// After `stopRunning()` on the queue of the session's output, the session delivers nothing. A session without input or
/// output runs without pictures. A session whose camera is lost stops by itself. Starting a running session, or
/// stopping a stopped session, changes nothing. Releasing the last reference stops the session.
class KIVO_EXPORT CaptureSession {
public:
    virtual ~CaptureSession() = default;

    /// Whether the session takes that part, and the call that adds the part. A part that the session does not take must
    /// not be added.
    virtual bool canAddInput(const CaptureInput& input) const = 0;
    virtual void addInput(std::shared_ptr<CaptureInput> input) = 0;
    virtual bool canAddOutput(const CaptureMetadataOutput& output) const = 0;
    virtual void addOutput(std::shared_ptr<CaptureMetadataOutput> output) = 0;

    /// Whether the camera is on, and the calls that switch it. A session that has ended by itself is not running.
    virtual bool isRunning() const = 0;
    virtual void startRunning() = 0;
    virtual void stopRunning() = 0;

    /// The newest picture, which stays when the session stops. Callable from any thread.
    virtual PreviewFrame preview() const = 0;
};

} // namespace kivo::platform
