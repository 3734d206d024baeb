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

std::string_view nameOf(platform::readid::DocumentType type) {
    return type == platform::readid::DocumentType::passport ? "Passport" : "Identity card";
}

/// The date with its century, where all of it is known: a birth lies in the past, an expiry in this century.
std::string dateInWords(const std::string& digits, bool isBirth) {
    const bool isWhole = digits.size() == 6 && std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '9'; });
    if (!isWhole) {
        return digits;
    }
    const auto today = std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now());
    const int yearNow = static_cast<int>(std::chrono::year_month_day{today}.year()) % 100;
    const bool isOfLastCentury = isBirth && std::stoi(digits.substr(0, 2)) > yearNow;
    return digits.substr(4, 2) + "." + digits.substr(2, 2) + "." + (isOfLastCentury ? "19" : "20") +
           digits.substr(0, 2);
}

void addFact(Page& page, std::string_view identifier, std::string_view label, const std::string& value) {
    if (!value.empty()) {
        page.addValue(identifier, page.look().text(label) + ": " + value);
    }
}

void addIdentity(Page& page, const Zone& zone) {
    addFact(page, "Name", "Name", zone.primaryIdentifier);
    addFact(page, "GivenNames", "Given names", zone.secondaryIdentifier);
    addFact(page, "DateOfBirth", "Date of birth", dateInWords(zone.dateOfBirth, /*isBirth=*/true));
    addFact(page, "Nationality", "Nationality", zone.nationality);
    addFact(page, "Sex", "Sex", zone.sex);
    addFact(page, "Issuer", "Issued by", zone.issuer);
    addFact(page, "DateOfExpiry", "Date of expiry", dateInWords(zone.dateOfExpiry, /*isBirth=*/false));
}

void addNumber(Page& page, const Zone& zone) {
    addFact(page, "Kind", "Document", page.look().text(nameOf(zone.type)));
    addFact(page, "Number", "Document number", zone.documentNumber);
}

/// What a proof says, for each of its three ends.
struct ProofWords {
    Proof Verdict::* proof;
    std::string_view identifier;
    std::string_view proven;
    std::string_view refuted;
    std::string_view notTried;
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

} // namespace

std::string_view verdictInWords(const Verdict& verdict) {
    if (std::ranges::any_of(proofs, [&](const ProofWords& each) { return verdict.*each.proof == Proof::refuted; })) {
        return "The document has failed a check.";
    }
    const bool isSealed = verdict.dataIsUnchanged == Proof::proven && verdict.signatureHolds == Proof::proven &&
                          verdict.signerIsTrusted == Proof::proven;
    return isSealed ? "The document is genuine." : "The document was read. Not every check could be made here.";
}

Page pageResult(const Look& look, const Zone& zone, bool isFull, std::function<void()> goOn) {
    Page page{look, "pageResult", "The page was read", "Compare with the document before you go on."};
    addNumber(page, zone);
    if (isFull) {
        addIdentity(page, zone);
    }
    page.addButton("Continue", "Continue", std::move(goOn));
    return page;
}

ChipResultPage::ChipResultPage(const Look& look, const Zone& zone, const Verdict& verdict, bool isFull,
                               std::function<void()> goOn)
    : page_{look, "chipResult", "The chip was read", verdictInWords(verdict)} {
    const auto row = std::make_shared<platform::View>();
    portrait_ = std::make_shared<platform::PreviewView>();
    portrait_->setIdentifier("chipResultPortrait");
    portrait_->setAccessibilityLabel(look.text("Portrait"));
    portrait_->setPlacement({.top = 0, .centerX = 0, .width = 120, .height = 160});
    portrait_->changeLayer([](platform::Layer& layer) {
        layer.cornerRadius = 8;
        layer.masksToBounds = true;
    });
    portrait_->setHidden(true);
    row->addSubview(portrait_);
    page_.add(row);
    if (isFull) {
        addIdentity(page_, zone);
        addNumber(page_, zone);
        for (const auto& each : proofs) {
            const auto proof = verdict.*each.proof;
            const auto words = proof == Proof::proven    ? each.proven
                               : proof == Proof::refuted ? each.refuted
                                                         : each.notTried;
            const auto sign = proof == Proof::proven ? "\u2713 " : proof == Proof::refuted ? "\u2717 " : "\u2013 ";
            const auto line = page_.addValue(each.identifier, sign + look.text(words));
            line->setAccessibilityLabel(look.text(words));
        }
    }
    page_.addButton("Continue", "Continue", std::move(goOn));
}

void ChipResultPage::setPortrait(platform::VideoFrame portrait) {
    std::static_pointer_cast<platform::PreviewView>(portrait_)->setPreviewSession(
        std::make_shared<StillPicture>(std::move(portrait)));
    portrait_->setHidden(false);
}

} // namespace kivo::reader
