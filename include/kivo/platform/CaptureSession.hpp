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

/// The kinds of code that can be looked for.
enum class MetadataObjectType { qr, ean8, ean13, pdf417 };

/// Something found in a camera's picture.
struct MetadataObject {
    /// Absent when the thing found is no machine-readable code.
    std::optional<MetadataObjectType> type;
    /// What the code says; absent when it could not be read. A code that names no other character set is taken for
    /// UTF-8 and handed over as it is: whether it is sound is for the reader to check.
    std::optional<std::string> text;
};

/// Hears what is found, on the queue that was named along with it.
class KIVO_EXPORT CaptureMetadataOutputDelegate {
public:
    virtual ~CaptureMetadataOutputDelegate() = default;

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

    virtual void setDelegate(std::weak_ptr<CaptureMetadataOutputDelegate> delegate,
                             std::shared_ptr<DispatchQueue> queue) = 0;
    virtual void setObjectTypes(std::vector<MetadataObjectType> types) = 0;
};

/// What to show of a camera.
struct PreviewFrame {
    /// The newest picture; null before the first one. It is shared with the session: nothing is copied.
    std::shared_ptr<const VideoFrame> picture;
    /// Grows with every picture, so that whoever draws knows whether there is a new one.
    std::uint64_t number = 0;
};

/// A camera at work. Main thread.
///
/// Nothing is delivered from a session that has been stopped, when it is stopped on the queue of its output. A session
/// that lacks its input or output runs without pictures, and one whose camera is lost stops by itself. Starting a
/// session that runs, or stopping one that does not, changes nothing. The last reference to go stops it.
class KIVO_EXPORT CaptureSession {
public:
    virtual ~CaptureSession() = default;

    virtual bool canAddInput(const CaptureInput& input) const = 0;
    virtual void addInput(std::shared_ptr<CaptureInput> input) = 0;
    virtual bool canAddOutput(const CaptureMetadataOutput& output) const = 0;
    virtual void addOutput(std::shared_ptr<CaptureMetadataOutput> output) = 0;

    virtual bool isRunning() const = 0;
    virtual void startRunning() = 0;
    virtual void stopRunning() = 0;

    /// Kept when the session stops. Callable from any thread.
    virtual PreviewFrame preview() const = 0;
};

} // namespace kivo::platform
