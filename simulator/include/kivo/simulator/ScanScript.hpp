#pragma once

#include <kivo/platform/ui/AttributedText.hpp>

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace kivo::simulator {

/// The vendor's numbers for the endings of a face scan.
namespace faceScanStatus {

/// The vendor's numbers for the end of a session.
inline constexpr int completed = 0;
inline constexpr int unsuccessful = 1;
inline constexpr int cancelled = 2;
inline constexpr int cameraRefused = 4;
inline constexpr int contextSwitch = 5;
inline constexpr int landscapeMode = 6;
inline constexpr int reversePortrait = 7;
inline constexpr int timeout = 8;
inline constexpr int lowMemory = 9;
inline constexpr int encryptionKeyInvalid = 12;
inline constexpr int guidanceImagesMissing = 13;
inline constexpr int cameraInitializationIssue = 14;
inline constexpr int lockedOut = 15;
inline constexpr int unknownInternalError = 16;
inline constexpr int cancelledOnReadyScreen = 17;
inline constexpr int sessionExpired = 18;

} // namespace faceScanStatus

/// The vendor's numbers for the endings of an ID scan.
namespace idScanStatus {

/// The vendor's numbers for the end of a scan.
inline constexpr int completed = 0;
inline constexpr int unsuccessful = 1;
inline constexpr int cancelled = 2;
inline constexpr int timeout = 3;
inline constexpr int contextSwitch = 4;
inline constexpr int cameraRefused = 5;
inline constexpr int landscapeMode = 7;
inline constexpr int reversePortrait = 8;

} // namespace idScanStatus

/// The course of a simulated session. By default the session makes one good scan at once and accepts every verdict of
/// the server.
struct ScanScript {
    /// The sides of a card that an ID scan shows. With `frontThenBack` each side goes to the server by itself.
    enum class Sides { front, frontAndBack, frontThenBack };

    /// The status of the last scan, such as `faceScanStatus::timeout`. Where sessions wait for a person, the person's
    /// button decides instead.
    int status = 0;
    /// The number of scans that the library rejects although the server accepts them. After each of them the library
    /// asks for another scan.
    int retries = 0;
    /// The duration of every scan, by the main queue.
    std::chrono::milliseconds scanTime{0};
    /// Ends the session with this status while it waits for the server's verdict.
    std::optional<int> statusWhileWaiting{};
    /// Whether the library accepts the server's blob. A session whose blob is not accepted is over.
    bool takesResultBlob = true;

    /// With false `createSessionVC` returns null.
    bool makesScreen = true;
    /// With false the session ends without a result.
    bool givesResult = true;
    std::optional<std::string> sessionId = "simulated-session";
    /// Whether a result holds a scan.
    bool hasScan = true;
    /// The lengths of the Base64 texts, rounded down to multiples of four.
    std::size_t scanBytes = std::size_t{64} * 1024;
    std::size_t imageBytes = std::size_t{16} * 1024;
    /// The number of images in each list.
    std::size_t images = 1;
    Sides sides = Sides::frontAndBack;
};

/// The record of one session.
struct ScanRecord {
    /// What was scanned.
    enum class Kind { face, idDocument };

    /// What was scanned, and the token with which the SDK began.
    Kind kind;
    std::string sessionToken;
    /// The status of each result that the processor got.
    std::vector<int> results{};
    std::vector<float> uploadProgress{};
    std::vector<platform::AttributedText> uploadMessages{};
    std::vector<std::string> resultBlobs{};
    /// Whether the library accepted each of these blobs.
    std::vector<bool> blobsTaken{};
    int cancels = 0;
    /// Whether the screen has appeared.
    bool isShown = false;
    /// Whether the screen is gone and the processor has been told.
    bool isDone = false;
};

} // namespace kivo::simulator
