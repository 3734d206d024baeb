#pragma once

#include <kivo/platform/Clock.hpp>
#include <kivo/platform/FrameCamera.hpp>
#include <kivo/platform/NotificationCenter.hpp>
#include <kivo/platform/Services.hpp>
#include <kivo/platform/Text.hpp>
#include <kivo/platform/Url.hpp>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The promises of include/kivo/platform as checks that run against any implementation.
namespace kivo::check {

/// What a fresh set of services is to stand on.
struct Setting {
    /// The folder of the main bundle; the checks write `Info.plist` and resources into it. It may not exist.
    std::filesystem::path mainBundle{};
    /// Where secrets and the device identifier are kept. It may not exist yet.
    std::filesystem::path dataFolder{};
    /// The only certificates to trust (PEM); empty: the system's.
    std::filesystem::path trustedCertificates{};
};

/// The machine's network, as far as the checks may switch it.
class Network {
public:
    virtual ~Network() = default;

    /// Whether the switch worked.
    virtual bool setReachable(bool reachable) = 0;
};

/// One implementation of the seam, and how the checks get at it. Everything is called on the main thread.
struct ServicesUnderTest {
    std::function<platform::Services(const Setting&)> make;
    /// Runs the blocks of the main queue as they become due, for that time.
    std::function<void(std::chrono::milliseconds)> runMainQueue;
    /// Takes the network into the checks' hands until the object goes. The network begins unreachable. Null, or absent:
    /// changes of the network stay unchecked.
    std::function<std::unique_ptr<Network>()> takeNetwork{};
    /// A camera that reads the pictures of a source; absent: stays unchecked.
    std::function<std::shared_ptr<platform::Camera>(std::shared_ptr<platform::FrameSource>)> makeCamera =
        platform::makeFrameCamera;
    /// How long a check waits for an event that has to come.
    std::chrono::milliseconds patience{10'000};

    // The classes and functions of the seam that a platform usually takes as they are.
    std::function<std::shared_ptr<platform::DispatchQueue>(std::string label)> makeSerialQueue = [](std::string label) {
        return std::make_shared<platform::SerialQueue>(std::move(label));
    };
    std::function<std::shared_ptr<platform::Clock>()> makeClock = [] {
        return std::make_shared<platform::SteadyClock>();
    };
    std::function<void(platform::NotificationCenter&, const platform::Notification&)> post =
        [](auto& center, const auto& notification) { center.post(notification); };
    std::function<std::optional<platform::Url>(std::string_view)> parseUrl = platform::parseUrl;
    std::function<std::vector<std::string_view>(std::string_view)> characters = text::characters;
};

/// The services of the platform that this program was built for. `BuiltPlatform.cpp` alone names them.
ServicesUnderTest builtPlatform();

/// One sentence about one seam.
struct Promise {
    std::string seam;
    std::string text;
};

enum class Result {
    kept,
    broken,
    /// The machine lacks something that the check needs.
    unchecked,
};

/// What became of a promise.
struct Finding {
    Promise promise;
    Result result = Result::kept;
    /// Of a broken promise: what was expected and what came, a line each. Of an unchecked one: why.
    std::vector<std::string> details{};
    std::chrono::milliseconds took{0};
};

/// All promises, grouped by seam.
std::vector<Promise> promises();

/// Follows the checks as they run.
struct Progress {
    std::function<void(const Promise&)> onBegin{};
    std::function<void(const Finding&)> onEnd{};
};

/// Checks the promises that `isWanted` names, all by default. Call it on the main thread.
std::vector<Finding> check(const ServicesUnderTest& underTest,
                           const std::function<bool(const Promise&)>& isWanted = nullptr,
                           const Progress& progress = {});

} // namespace kivo::check
