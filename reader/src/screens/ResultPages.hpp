#pragma once

#include "files/Zone.hpp"
#include "screens/Page.hpp"
#include "verification/Verdict.hpp"

#include <kivo/platform/VideoFrame.hpp>

#include <functional>
#include <memory>

namespace kivo::reader {

/// A page that shows what the page of the document gave: the kind and the number, or with `isFull` all of the zone.
Page pageResult(const Look& look, const Zone& zone, bool isFull, std::function<void()> goOn);

/// The page that shows what the chip gave: the verdict in one sentence and the portrait, or with `isFull` also the data
/// and each proof.
class ChipResultPage {
public:
    ChipResultPage(const Look& look, const Zone& zone, const Verdict& verdict, bool isFull, std::function<void()> goOn);

    const Page& page() const { return page_; }

    /// Shows the portrait. The picture stays in memory.
    void setPortrait(platform::VideoFrame portrait);

private:
    void addPortrait();

    Page page_;
    std::shared_ptr<platform::View> portrait_;
};

/// The verdict in a sentence.
ScreenText verdictInWords(const Verdict& verdict);

} // namespace kivo::reader
