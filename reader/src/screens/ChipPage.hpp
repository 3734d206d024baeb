#pragma once

#include "reading/ChipReading.hpp"
#include "screens/Page.hpp"

#include <map>
#include <memory>

namespace kivo::reader {

/// The page that stands while a chip is waited for and read. Main thread.
class ChipPage {
public:
    ChipPage(const Look& look, bool cards);

    const Page& page() const { return page_; }

    void show(const ChipProgress& progress);

private:
    /// A kind of data: its name, and how much was read or the sign that all was.
    struct Line {
        std::shared_ptr<platform::Label> name;
        std::shared_ptr<platform::Label> percent;
        std::shared_ptr<platform::ActivityIndicatorView> wheel;
        std::shared_ptr<platform::ImageView> tick;
    };

    void showFile(const ChipProgress& progress);
    Line addLine(ScreenText content);
    void finishFiles();

    Page page_;
    const bool cards_;
    ChipProgress::Step step_ = ChipProgress::Step::waitingForCard;
    std::shared_ptr<platform::View> wheel_;
    Page::Column card_;
    std::map<ScreenText, Line> lines_;
    /// The kind of data under way; empty for none.
    ScreenText current_;
};

} // namespace kivo::reader
