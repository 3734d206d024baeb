#include "screens/ChipPage.hpp"

#include <algorithm>
#include <string>

namespace kivo::reader {
namespace {

constexpr std::string_view layPassport =
    "Open the passport at the page with the photo and lay it on the reader with its cover down.";
constexpr std::string_view layCard = "Lay the card flat on the reader.";
constexpr std::string_view stay = "Leave the document on the reader until all is read.";

/// What a person calls the content of a file; the files that only serve the reading have one name together.
std::string_view contentOf(DocumentFile file) {
    switch (file) {
    case DocumentFile::dg1:
        return "Data of the page";
    case DocumentFile::dg2:
        return "Portrait";
    case DocumentFile::dg7:
        return "Picture of the signature";
    case DocumentFile::dg11:
        return "Further data of the person";
    case DocumentFile::dg12:
        return "Further data of the document";
    case DocumentFile::sod:
        return "Seal of the state";
    default:
        return "Set-up of the chip";
    }
}

} // namespace

ChipPage::ChipPage(const Look& look, bool cards)
    : page_{look, "chip", "Lay the document on the reader", cards ? layCard : layPassport}
    , cards_{cards} {
    page_.addWheel();
}

void ChipPage::show(const ChipProgress& progress) {
    using enum ChipProgress::Step;
    step_ = progress.step;
    switch (progress.step) {
    case waitingForReader:
        page_.setTitle("Connect the card reader");
        page_.setMessage("No card reader is connected to this machine.");
        break;
    case waitingForCard:
        page_.setTitle("Lay the document on the reader");
        page_.setMessage(cards_ ? layCard : layPassport);
        break;
    case opening:
        page_.setTitle("Opening the chip");
        page_.setMessage(stay);
        break;
    case reading:
        page_.setTitle("Reading the chip");
        page_.setMessage(stay);
        showFile(progress);
        break;
    case provingChip:
        finishFiles();
        page_.setTitle("Checking the chip");
        page_.setMessage(stay);
        break;
    }
}

void ChipPage::showFile(const ChipProgress& progress) {
    const auto content = contentOf(progress.file);
    if (content != current_) {
        finishFiles();
        current_ = content;
    }
    auto& line = lines_[content];
    if (!line) {
        line = page_.addText("Group" + std::to_string(lines_.size()), content);
        line->setTextAlignment(platform::TextAlignment::center);
    }
    const auto inAll = std::max<std::size_t>(progress.bytesInAll, 1);
    const auto percent = std::min<std::size_t>(progress.bytesRead * 100 / inAll, 100);
    line->setText(page_.look().text(content) + ": " + std::to_string(percent) + " %");
    line->setAccessibilityLabel({});
}

void ChipPage::finishFiles() {
    if (current_.empty()) {
        return;
    }
    const auto& line = lines_.at(current_);
    line->setText("\u2713 " + page_.look().text(current_));
    line->setAccessibilityLabel(page_.look().text(current_) + ": " + page_.look().text("read"));
    current_ = {};
}

} // namespace kivo::reader
