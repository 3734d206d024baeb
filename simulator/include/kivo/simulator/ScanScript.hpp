#pragma once

#include <kivo/platform/ui/AttributedText.hpp>

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace kivo::simulator {

/// The vendor's numbers for how a face session went.
namespace faceScanStatus {

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

/// The same for an ID scan.
namespace idScanStatus {

inline constexpr int completed = 0;
inline constexpr int unsuccessful = 1;
inline constexpr int cancelled = 2;
inline constexpr int timeout = 3;
inline constexpr int contextSwitch = 4;
inline constexpr int cameraRefused = 5;
inline constexpr int landscapeMode = 7;
inline constexpr int reversePortrait = 8;

} // namespace idScanStatus

/// How a simulated session goes. By default it makes one good scan at once and takes whatever the server says to it.
struct ScanScript {
    /// Which sides of a card an ID scan shows, and whether each goes to the server by itself.
    enum class Sides { front, frontAndBack, frontThenBack };

    /// The number that the last scan ends with, such as `faceScanStatus::timeout`. While a person steers, the buttons
    /// decide instead.
    int status = 0;
    /// How many scans the library is not content with although the server was: after each it asks for another.
    int retries = 0;
    /// What every scan takes, on the main queue.
    std::chrono::milliseconds scanTime{0};
    /// Breaks the session off with this number while the server's verdict is awaited.
    std::optional<int> statusWhileWaiting{};
    /// Whether the library takes the server's blob for good; if not, the session is over.
    bool takesResultBlob = true;

    /// False: `createSessionVC` gives null.
    bool makesScreen = true;
    /// False: the session ends without ever handing over a result.
    bool givesResult = true;
    std::optional<std::string> sessionId = "simulated-session";
    /// Absent scans are results without one.
    bool hasScan = true;
    /// Lengths in Base64, rounded down to what Base64 can have.
    std::size_t scanBytes = std::size_t{64} * 1024;
    std::size_t imageBytes = std::size_t{16} * 1024;
    /// In each list of images. 0: the lists are empty.
    std::size_t images = 1;
    Sides sides = Sides::frontAndBack;
};

/// What went on in one session.
struct ScanRecord {
    enum class Kind { face, idDocument };

    Kind kind;
    std::string sessionToken;
    /// The status of each result that was handed over.
    std::vector<int> results{};
    std::vector<float> uploadProgress{};
    std::vector<platform::AttributedText> uploadMessages{};
    std::vector<std::string> resultBlobs{};
    /// The answers to these blobs.
    std::vector<bool> blobsTaken{};
    int cancels = 0;
    /// The screen came up.
    bool isShown = false;
    /// The screen is gone again, and the processor knows.
    bool isDone = false;
};

} // namespace kivo::simulator
