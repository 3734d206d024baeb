#pragma once

#include <kivo/platform/ReadID.hpp>

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kivo::simulator {

/// The course of one reading of a document.
class Reading {
public:
    /// How a reading ends.
    enum class Kind { pageAndChip, chip, page, unknownSuccess, failure, refusal, byPerson };

    /// Reads the data page and the chip, and sends both to the session's document proxy.
    static Reading pageAndChip() { return Reading{Kind::pageAndChip}; }

    /// The same with the chip alone.
    static Reading chip() { return Reading{Kind::chip}; }

    /// The same with the data page alone.
    static Reading page() { return Reading{Kind::page}; }

    /// Succeeds with something that the SDK does not know. Nothing is sent.
    static Reading unknownSuccess() { return Reading{Kind::unknownSuccess}; }

    /// Fails, with `pageWasRead` after the data page has been read. Nothing is sent.
    static Reading failure(platform::readid::FailureReason reason, bool pageWasRead = false) {
        Reading reading{Kind::failure};
        reading.reason_ = reason;
        reading.pageWasRead_ = pageWasRead;
        return reading;
    }

    /// The reading does not begin.
    static Reading refusal(platform::readid::ReadIDError error) {
        Reading reading{Kind::refusal};
        reading.error_ = std::move(error);
        return reading;
    }

    /// Shows a button for each of the other endings except the refusal, and waits for a person to tap a button.
    static Reading byPerson() { return Reading{Kind::byPerson}; }

    /// How the reading ends.
    Kind kind() const { return kind_; }

    /// Why a failure fails.
    platform::readid::FailureReason reason() const { return reason_; }

    /// Whether a failure comes after the page was read.
    bool pageWasRead() const { return pageWasRead_; }

    /// Why a refusal begins no reading.
    const platform::readid::ReadIDError& error() const { return error_; }

private:
    explicit Reading(Kind kind)
        : kind_{kind} {}

    Kind kind_;
    platform::readid::FailureReason reason_ = platform::readid::FailureReason::other;
    bool pageWasRead_ = false;
    platform::readid::ReadIDError error_{};
};

/// The document-reading vendor's library, simulated. Install it as `platform::Services::readID`. Main thread only.
///
/// A reading shows a screen, sends a specimen document over the platform's own transport to the document proxy that the
/// SDK names, and reports when the screen has gone. When the proxy cannot be reached, or refuses, the reading fails
/// with the fitting reason. Where the host lists pins, the proxy must be one of the pinned servers.
class ReadID final : public platform::ReadID {
public:
    /// A reading session that a document proxy gave out.
    struct Session {
        /// The name of the session at the document proxy.
        std::string id;
        /// Whether the SDK has finished the session.
        bool isFinished = false;
    };

    /// `usual` is the course of every reading without a plan of its own.
    explicit ReadID(Reading usual = Reading::pageAndChip());
    ~ReadID() override;

    /// Plans the next reading. Several calls plan several readings, in order.
    void next(Reading reading);

    /// Plans the next readings in place of the former plan.
    void plan(std::deque<Reading> readings) { planned_ = std::move(readings); }

    /// The number of planned readings that have not begun.
    std::size_t planned() const { return planned_.size(); }

    /// The flow that the SDK passed for each reading so far.
    const std::vector<platform::readid::NFCWithAccessControlFlow>& flows() const { return flows_; }

    /// The sessions so far, the oldest first.
    std::vector<Session> sessions() const;

    /// Drops the records of flows and of finished sessions, for a test that runs for long.
    void forgetSessions();

    std::shared_ptr<platform::readid::UIResources> makeUIResources() override;

    /// Refuses a document proxy that is no https address, and a second reading while another is under way.
    std::expected<void, platform::readid::ReadIDError>
    identify(const std::shared_ptr<platform::ViewController>& from,
             platform::ModalPresentationStyle modalPresentationStyle,
             const std::shared_ptr<platform::readid::NFCWithAccessControlFlow>& flow,
             std::function<void(platform::readid::ReadIDResult)> handler) override;

private:
    class ReadingSession;
    class Performance;

    Reading usual_;
    std::deque<Reading> planned_;
    std::vector<platform::readid::NFCWithAccessControlFlow> flows_;
    /// Shared with the readings, which may outlive the library.
    std::shared_ptr<std::vector<std::shared_ptr<ReadingSession>>> sessions_;
    std::weak_ptr<Performance> current_;
};

} // namespace kivo::simulator
