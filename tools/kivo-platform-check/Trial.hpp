#pragma once

#include "PlatformCheck.hpp"

#include <kivo/platform/DispatchQueue.hpp>

#include <concepts>
#include <deque>
#include <functional>
#include <mutex>
#include <ranges>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

namespace kivo::check {

/// A value as a finding shows it.
std::string shown(std::string_view text);
std::string shown(platform::UrlErrorKind kind);

template <class T>
std::string shown(const T& value) {
    if constexpr (std::same_as<T, bool>) {
        return value ? "true" : "false";
    } else if constexpr (std::is_arithmetic_v<T>) {
        return std::to_string(value);
    } else if constexpr (std::convertible_to<const T&, std::string_view>) {
        return shown(std::string_view{value});
    } else if constexpr (requires { value.has_value(); }) {
        return value ? shown(*value) : "nothing";
    } else if constexpr (requires { value.first; }) {
        return shown(value.first) + ": " + shown(value.second);
    } else if constexpr (requires { value.native(); }) {
        return shown(std::string_view{value.native()});
    } else if constexpr (std::ranges::range<T>) {
        std::string all;
        for (const auto& each : value) {
            all += (all.empty() ? "" : ", ") + shown(each);
        }
        return "[" + all + "]";
    } else {
        return value ? "an object" : "null";
    }
}

/// The service, which has to be there.
template <class T>
T& required(const std::shared_ptr<T>& service) {
    if (!service) {
        throw std::runtime_error{"the service is absent"};
    }
    return *service;
}

/// A queue that keeps its blocks until the check runs them.
class HeldBlocks final : public platform::DispatchQueue {
public:
    void async(std::function<void()> block) override {
        const std::scoped_lock lock{mutex_};
        blocks_.push_back(std::move(block));
    }

    std::size_t size() const {
        const std::scoped_lock lock{mutex_};
        return blocks_.size();
    }

    /// Runs the blocks on this thread, those that they add included.
    void runAll() {
        while (size() > 0) {
            std::function<void()> block;
            {
                const std::scoped_lock lock{mutex_};
                block = std::move(blocks_.front());
                blocks_.pop_front();
            }
            block();
        }
    }

private:
    mutable std::mutex mutex_;
    std::deque<std::function<void()>> blocks_;
};

/// A check under way: the services that it examines, and its findings so far.
class Trial {
public:
    Trial(const ServicesUnderTest& underTest, std::filesystem::path place, Finding& finding)
        : under{underTest}
        , folder{std::move(place)}
        , finding_{finding} {}

    /// Fresh services on this check's folder.
    platform::Services services(const std::filesystem::path& trustedCertificates = {}) const {
        return under.make(
            {.mainBundle = bundleFolder(), .dataFolder = dataFolder(), .trustedCertificates = trustedCertificates});
    }

    std::filesystem::path bundleFolder() const { return folder / "app.bundle"; }

    std::filesystem::path dataFolder() const { return folder / "data"; }

    /// Writes a file below the check's folder, and gives its path.
    std::filesystem::path write(const std::filesystem::path& name, std::string_view bytes) const;

    void expect(bool holds, const std::string& what) {
        if (!holds) {
            fail("expected: " + what);
        }
    }

    template <class Came, class Expected>
    void expectEqual(const std::string& what, const Came& came, const Expected& expected) {
        if (!(came == expected)) {
            fail(what + ": expected " + shown(expected) + ", came " + shown(came));
        }
    }

    void fail(std::string detail);

    /// Ends the check without a result, for want of what `why` names.
    [[noreturn]] void giveUp(const std::string& why);

    /// Runs the main queue until `holds` is true or the patience is over; tells which.
    bool await(const std::function<bool()>& holds) const { return await(under.patience, holds); }

    /// The same, and a finding when it does not come true.
    bool expectSoon(const std::string& what, const std::function<bool()>& holds);

    /// Runs the main queue for some time in which something must not happen.
    void linger(std::chrono::milliseconds time) const {
        await(time, [] { return false; });
    }

    const ServicesUnderTest& under;
    const std::filesystem::path folder;

private:
    bool await(std::chrono::milliseconds limit, const std::function<bool()>& holds) const;

    Finding& finding_;
};

/// Ends a check that cannot be made.
struct Unchecked : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// One promise and the check of it.
struct Check {
    std::string seam;
    std::string promise;
    std::function<void(Trial&)> run;
};

using Checks = std::vector<Check>;

Checks servicesChecks();
Checks mainQueueChecks();
Checks runLoopChecks();
Checks serialQueueChecks();
Checks clockChecks();
Checks notificationChecks();
Checks textChecks();
Checks urlChecks();
Checks keychainChecks();
Checks trustChecks();
Checks urlAnswerChecks();
Checks urlRequestChecks();
Checks urlTaskChecks();
Checks urlDelegateChecks();
Checks reachabilityChecks();
Checks bundleChecks();
Checks deviceChecks();
Checks workspaceChecks();
Checks fontsChecks();
Checks cameraChecks();

} // namespace kivo::check
