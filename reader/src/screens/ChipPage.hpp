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
    void showFile(const ChipProgress& progress);
    void finishFiles();

    Page page_;
    const bool cards_;
    ChipProgress::Step step_ = ChipProgress::Step::waitingForCard;
    /// A line for each kind of data, in the order of the reading.
    std::map<std::string_view, std::shared_ptr<platform::Label>> lines_;
    /// The kind of data under way; empty for none.
    std::string_view current_;
};

} // namespace kivo::reader
