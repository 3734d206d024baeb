#include "screens/ChipPage.hpp"

#include <algorithm>
#include <string>

namespace kivo::reader {
namespace {

constexpr double symbolSize = 24;
constexpr double widthOfPercent = 64;

constexpr ScreenText layPassport =
    "Open the passport at the page with the photo and lay it on the reader with its cover down.";
constexpr ScreenText layCard = "Lay the card flat on the reader.";
constexpr ScreenText stay = "Leave the document on the reader until all is read.";

/// What a person calls the content of a file; the files that only serve the reading have one name together.
ScreenText contentOf(DocumentFile file) {
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
    page_.setIllustration(cards ? "reader-card" : "reader-passport");
    wheel_ = page_.addWheel();
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
    if (!line.name) {
        line = addLine(content);
    }
    const auto inAll = std::max<std::size_t>(progress.bytesInAll, 1);
    const auto percent = std::min<std::size_t>(progress.bytesRead * 100 / inAll, 100);
    line.percent->setText(page_.look().text("#%", std::to_string(percent)));
    line.percent->superview()->setHidden(false);
    line.wheel->setHidden(false);
    if (line.tick) {
        line.tick->setHidden(true);
    }
    line.name->setAccessibilityLabel({});
}

ChipPage::Line ChipPage::addLine(ScreenText content) {
    if (!card_) {
        wheel_->setHidden(true);
        card_ = page_.addCard();
    }
    const auto number = std::to_string(lines_.size());
    const auto& colors = page_.look().colors();
    Line line{.name = page_.label("Group" + number, page_.look().text(content)),
              .percent = page_.label("Group" + number + "Percent", {}),
              .wheel = std::make_shared<platform::ActivityIndicatorView>(),
              .tick = page_.icon("reader-proven", colors.success)};
    line.wheel->setColor(colors.accent);
    line.wheel->setPlacement({.width = symbolSize, .height = symbolSize});
    line.wheel->startAnimating();
    const auto row = page_.addRow(card_, line.wheel, line.name);
    if (line.tick) {
        row->insertSubview(line.tick, 0);
    }
    // The number keeps to the edge, and leaves a line of large letters its room.
    line.percent->setMaximumContentSizeCategory(platform::ContentSizeCategory::extraExtraExtraLarge);
    const auto end = std::make_shared<platform::StackView>();
    end->setAlignment(platform::StackView::Alignment::trailing);
    end->setPlacement({.width = widthOfPercent});
    end->addSubview(line.percent);
    row->addSubview(end);
    return line;
}

void ChipPage::finishFiles() {
    if (current_.isEmpty()) {
        return;
    }
    const auto& line = lines_.at(current_);
    line.percent->superview()->setHidden(true);
    line.wheel->setHidden(true);
    if (line.tick) {
        line.tick->setHidden(false);
    }
    line.name->setAccessibilityLabel(page_.look().text(current_) + ": " + page_.look().text("read"));
    current_ = {};
}

} // namespace kivo::reader
