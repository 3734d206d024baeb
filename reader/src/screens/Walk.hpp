#pragma once

#include "screens/AimPage.hpp"
#include "screens/ChipPage.hpp"
#include "screens/Failures.hpp"
#include "screens/Parts.hpp"
#include "screens/ReaderScreen.hpp"
#include "screens/ResultPages.hpp"
#include "screens/TypingPage.hpp"
#include "sending/DocumentProxy.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kivo::reader {

/// One reading, from its first page to its report: choose, aim or type, lay the document on the reader, see, send. Main
/// thread. The screen keeps the object alive.
class Walk : public std::enable_shared_from_this<Walk> {
public:
    using Handler = std::function<void(platform::readid::ReadIDResult)>;

    Walk(platform::readid::NFCWithAccessControlFlow flow, ReaderParts parts, Handler handler);

    /// Presents the screen over `from`. `withInstructions` shows the page of instructions first.
    void begin(platform::ViewController& from, platform::ModalPresentationStyle style, bool withInstructions);

    bool isUnderWay() const { return handler_ != nullptr; }

private:
    using Step = void (Walk::*)();

    // The pages, in the order of the road.
    void showChoice();
    void showInstructions();
    void showAim();
    void showTyping();
    void showPageResult();
    void showChip();
    void showChipResult();
    void send();
    void showFailure(const FailedStep& failed);

    void choose(platform::readid::DocumentType type);
    void pageWasRead(const Zone& zone);
    void valuesWereTyped(const AccessKey& key);
    void readingDidEnd(const std::expected<ChipDocument, ChipFailure>& outcome);
    void chipWasRead(const ChipDocument& chip);
    void goOnWithoutChip();
    void decodePortrait();
    void sendingDidEnd(const Sending::Outcome& outcome);

    /// Shows a page. "Back" leads to the step `back`; without a step, out of the reading.
    void show(const Page& page, Step back);
    /// The step to which a person returns from the pages after the document is known.
    Step stepOfDocument() const;
    /// Runs `action` of this object when the button is tapped, unless the reading has ended by then.
    std::function<void()> when(Step action);
    std::function<void()> when(std::function<void(Walk&)> action);
    bool allows(platform::readid::DocumentType type) const;
    /// Whether only cards are read, which a person lays flat on the reader.
    bool readsCards() const;

    /// Takes a person for gone who does nothing for too long.
    void restartPatience();
    void personIsGone();

    std::optional<platform::readid::VIZResult> page() const;
    void succeed(const std::string& sessionId);
    void fail(platform::readid::FailureReason reason);
    void end(const platform::readid::ReadIDResult& result);
    void stopWork();

    platform::readid::NFCWithAccessControlFlow flow_;
    const ReaderParts parts_;
    const Look look_;
    Handler handler_;
    std::weak_ptr<ReaderScreen> screen_;
    bool withChoice_ = false;
    bool withInstructions_ = false;

    std::shared_ptr<AimPage> aim_;
    std::shared_ptr<TypingPage> typing_;
    std::shared_ptr<ChipPage> chipPage_;
    std::shared_ptr<ChipResultPage> resultPage_;
    /// Why the person types, where that is to be told.
    ScreenText typingRemark_;
    /// Whether there is a camera, and whether it could not be opened.
    bool hasCamera_ = false;
    bool isCameraRefused_ = false;
    std::shared_ptr<ChipReading> reading_;
    std::unique_ptr<Sending> sending_;
    /// Counts readings, so that the late end of a reading that was given up is told from the present one's.
    std::uint64_t readingNumber_ = 0;
    std::uint64_t patienceNumber_ = 0;
    int failedReadings_ = 0;

    AccessKey key_;
    /// The zone of the page, or the chip's once it was read.
    std::optional<Zone> zone_;
    ReadDocument document_;
};

} // namespace kivo::reader
