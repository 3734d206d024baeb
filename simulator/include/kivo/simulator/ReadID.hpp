#pragma once

#include <kivo/platform/ReadID.hpp>

#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kivo::simulator {

/// How one reading of a document goes.
class Reading {
public:
    enum class Kind { pageAndChip, chip, page, unknownSuccess, failure, refusal, byPerson };

    /// Reads the data page and the chip, and sends both to the session's document proxy.
    static Reading pageAndChip() { return Reading{Kind::pageAndChip}; }

    /// The same with the chip alone.
    static Reading chip() { return Reading{Kind::chip}; }

    /// The same with the data page alone.
    static Reading page() { return Reading{Kind::page}; }

    /// Succeeds with something that the SDK does not know. Nothing is sent.
    static Reading unknownSuccess() { return Reading{Kind::unknownSuccess}; }

    /// Fails; with `pageWasRead` the data page had been read by then. Nothing is sent.
    static Reading failure(platform::readid::FailureReason reason, bool pageWasRead = false) {
        Reading reading{Kind::failure};
        reading.reason_ = reason;
        reading.pageWasRead_ = pageWasRead;
        return reading;
    }

    /// Does not begin at all.
    static Reading refusal(platform::readid::ReadIDError error) {
        Reading reading{Kind::refusal};
        reading.error_ = std::move(error);
        return reading;
    }

    /// Shows a button for each of these endings but the refusal, and waits for a person to tap one.
    static Reading byPerson() { return Reading{Kind::byPerson}; }

    Kind kind() const { return kind_; }

    platform::readid::FailureReason reason() const { return reason_; }

    bool pageWasRead() const { return pageWasRead_; }

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
/// SDK names, and reports when the screen has gone. A proxy that cannot be reached, or refuses, makes the reading fail
/// with the reason that fits. Where the host lists pins, the proxy must be one of the pinned servers.
class ReadID final : public platform::ReadID {
public:
    /// A reading session that a document proxy gave out.
    struct Session {
        std::string id;
        /// Whether the SDK has said that it needs the session no more.
        bool isFinished = false;
    };

    /// `usual` is how every reading goes that nothing else was planned for.
    explicit ReadID(Reading usual = Reading::pageAndChip());
    ~ReadID() override;

    /// How the next reading goes; several calls plan several readings, in order.
    void next(Reading reading);

    /// What each reading so far was to do.
    const std::vector<platform::readid::NFCWithAccessControlFlow>& flows() const { return flows_; }

    std::vector<Session> sessions() const;

    /// Drops the flows and the finished sessions, for a test that runs for long.
    void forgetSessions();

    std::shared_ptr<platform::readid::UIResources> makeUIResources() override;

    /// Refuses a document proxy that is no https address, and a second reading while one is under way.
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
