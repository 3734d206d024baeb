#include "screens/ResultPages.hpp"

#include <kivo/platform/ui/PreviewView.hpp>

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <utility>

namespace kivo::reader {
namespace {

/// Shows one picture, as a camera would that sees nothing else.
class StillPicture final : public platform::CaptureSession {
public:
    explicit StillPicture(platform::VideoFrame picture)
        : picture_{std::make_shared<const platform::VideoFrame>(std::move(picture))} {}

    bool canAddInput(const platform::CaptureInput& /*input*/) const override { return false; }

    void addInput(std::shared_ptr<platform::CaptureInput> /*input*/) override {}

    bool canAddOutput(const platform::CaptureMetadataOutput& /*output*/) const override { return false; }

    void addOutput(std::shared_ptr<platform::CaptureMetadataOutput> /*output*/) override {}

    bool isRunning() const override { return false; }

    void startRunning() override {}

    void stopRunning() override {}

    platform::PreviewFrame preview() const override { return {.picture = picture_, .number = 1}; }

private:
    const std::shared_ptr<const platform::VideoFrame> picture_;
};

ScreenText nameOf(platform::readid::DocumentType type) {
    return type == platform::readid::DocumentType::passport ? ScreenText{"Passport"} : ScreenText{"Identity card"};
}

/// The date with its century, where all of it is known: a birth lies in the past, an expiry in this century.
std::string dateInWords(const Look& look, const std::string& digits, bool isBirth) {
    const bool isWhole = digits.size() == 6 && std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '9'; });
    if (!isWhole) {
        return digits;
    }
    const auto today = std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now());
    const int yearNow = static_cast<int>(std::chrono::year_month_day{today}.year()) % 100;
    const bool isOfLastCentury = isBirth && std::stoi(digits.substr(0, 2)) > yearNow;
    auto date = look.text("dd.mm.yyyy");
    const std::pair<std::string_view, std::string> parts[] = {
        {"dd", digits.substr(4, 2)},
        {"mm", digits.substr(2, 2)},
        {"yyyy", (isOfLastCentury ? "19" : "20") + digits.substr(0, 2)},
    };
    for (const auto& [place, part] : parts) {
        if (const auto at = date.find(place); at != std::string::npos) {
            date.replace(at, place.size(), part);
        }
    }
    return date;
}

/// The values of a document, each below the text that names the value.
class Facts {
public:
    explicit Facts(Page& page)
        : page_{page}
        , column_{page.addCard()} {}

    void addNumber(const Zone& zone) const {
        add("Kind", "Document", page_.look().text(nameOf(zone.type)));
        add("Number", "Document number", zone.documentNumber);
    }

    void addIdentity(const Zone& zone) const {
        add("Name", "Name", zone.primaryIdentifier);
        add("GivenNames", "Given names", zone.secondaryIdentifier);
        add("DateOfBirth", "Date of birth", dateInWords(page_.look(), zone.dateOfBirth, /*isBirth=*/true));
        add("Nationality", "Nationality", zone.nationality);
        add("Sex", "Sex", zone.sex);
        add("Issuer", "Issued by", zone.issuer);
        add("DateOfExpiry", "Date of expiry", dateInWords(page_.look(), zone.dateOfExpiry, /*isBirth=*/false));
    }

private:
    void add(const std::string& identifier, ScreenText name, std::string value) const {
        if (value.empty()) {
            return;
        }
        const auto caption = page_.label(identifier + "Label", page_.look().text(name));
        page_.look().dressCaption(*caption);
        const auto pair = std::make_shared<platform::StackView>();
        pair->setAlignment(platform::StackView::Alignment::leading);
        pair->addSubview(caption);
        pair->addSubview(page_.label(identifier, std::move(value)));
        column_->addSubview(pair);
    }

    Page& page_;
    const Page::Column column_;
};

/// A sign beside a sentence: proven, refuted, or neither.
std::shared_ptr<platform::ImageView> signOf(const Page& page, Proof proof) {
    const auto& colors = page.look().colors();
    switch (proof) {
    case Proof::proven:
        return page.icon("reader-proven", colors.success);
    case Proof::refuted:
        return page.icon("reader-refuted", colors.error);
    default:
        return page.icon("reader-untried", colors.secondaryText);
    }
}

/// What a proof says, for each of its three ends.
struct ProofWords {
    Proof Verdict::* proof;
    std::string_view identifier;
    ScreenText proven;
    ScreenText refuted;
    ScreenText notTried;
};

constexpr std::array proofs{
    ProofWords{&Verdict::dataIsUnchanged, "Data", "The data is unchanged.", "The data was changed.",
               "Whether the data was changed is not known."},
    ProofWords{&Verdict::signatureHolds, "Signature", "The seal of the data holds.", "The seal of the data is false.",
               "The seal of the data could not be checked."},
    ProofWords{&Verdict::signerIsTrusted, "Signer", "The state that issued the document is known.",
               "The document was not issued by a known state.", "The issuing state could not be checked."},
    ProofWords{&Verdict::signerIsNotRevoked, "Revocation", "The seal was not withdrawn.", "The seal was withdrawn.",
               "Whether the seal was withdrawn is not known."},
    ProofWords{&Verdict::datesHold, "Dates", "The seal was valid when the document was made.",
               "The seal was not valid when the document was made.", "The dates of the seal could not be checked."},
    ProofWords{&Verdict::chipIsGenuine, "Chip", "The chip is no copy.", "The chip may be a copy.",
               "Whether the chip is a copy is not known."},
};

/// All proofs together.
Proof verdictOf(const Verdict& verdict) {
    if (std::ranges::any_of(proofs, [&](const ProofWords& each) { return verdict.*each.proof == Proof::refuted; })) {
        return Proof::refuted;
    }
    const bool isSealed = verdict.dataIsUnchanged == Proof::proven && verdict.signatureHolds == Proof::proven &&
                          verdict.signerIsTrusted == Proof::proven;
    return isSealed ? Proof::proven : Proof::notTried;
}

} // namespace

ScreenText verdictInWords(const Verdict& verdict) {
    switch (verdictOf(verdict)) {
    case Proof::proven:
        return "The document is genuine.";
    case Proof::refuted:
        return "The document has failed a check.";
    default:
        return "The document was read. Not every check could be made here.";
    }
}

Page pageResult(const Look& look, const Zone& zone, bool isFull, std::function<void()> goOn) {
    Page page{look, "pageResult", "The page was read", "Compare with the document before you go on."};
    const Facts facts{page};
    facts.addNumber(zone);
    if (isFull) {
        facts.addIdentity(zone);
    }
    page.addButton("Continue", "Continue", Page::Way::on, std::move(goOn));
    return page;
}

ChipResultPage::ChipResultPage(const Look& look, const Zone& zone, const Verdict& verdict, bool isFull,
                               std::function<void()> goOn)
    : page_{look, "chipResult", "The chip was read", {}} {
    addPortrait();
    page_.addRow(page_.addCard(), signOf(page_, verdictOf(verdict)),
                 page_.label("Verdict", look.text(verdictInWords(verdict))));
    if (isFull) {
        const Facts facts{page_};
        facts.addIdentity(zone);
        facts.addNumber(zone);
        const auto card = page_.addCard();
        for (const auto& each : proofs) {
            const auto proof = verdict.*each.proof;
            const auto words = proof == Proof::proven    ? each.proven
                               : proof == Proof::refuted ? each.refuted
                                                         : each.notTried;
            page_.addRow(card, signOf(page_, proof), page_.label(each.identifier, look.text(words)));
        }
    }
    page_.addButton("Continue", "Continue", Page::Way::on, std::move(goOn));
}

void ChipResultPage::addPortrait() {
    const auto row = std::make_shared<platform::View>();
    portrait_ = std::make_shared<platform::PreviewView>();
    portrait_->setIdentifier("chipResultPortrait");
    portrait_->setAccessibilityLabel(page_.look().text("Portrait"));
    portrait_->setPlacement({.top = 0, .centerX = 0, .width = 120, .height = 160});
    portrait_->changeLayer([](platform::Layer& layer) {
        layer.cornerRadius = 8;
        layer.masksToBounds = true;
    });
    row->setHidden(true);
    row->addSubview(portrait_);
    page_.add(row);
}

void ChipResultPage::setPortrait(platform::VideoFrame portrait) {
    std::static_pointer_cast<platform::PreviewView>(portrait_)->setPreviewSession(
        std::make_shared<StillPicture>(std::move(portrait)));
    portrait_->superview()->setHidden(false);
}

} // namespace kivo::reader
