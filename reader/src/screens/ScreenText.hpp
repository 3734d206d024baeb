#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace kivo::reader {

/// Every text of the screens, in English. Each text is its own key in the tables of reader/resources.
inline constexpr auto screenTexts = std::to_array<std::string_view>({
    "Back",
    "Cancel",
    "Continue",
    "Choose your document",
    "Which of these documents do you have at hand?",
    "Passport",
    "Identity card",
    "Identity card with three lines of arrows",
    "Identity card with two lines of arrows",
    "Have your document at hand",
    "This is how the reading goes:",
    "Show the lines of the document to the camera, or type three values.",
    "Type three values, which are printed on the document.",
    "Lay the document on the card reader.",
    "Leave the document there until all is read.",
    "Show the page to the camera",
    "Hold the page with the photo into the frame, with the two lines at its foot.",
    "Hold the side of the card with the lines of letters and arrows into the frame.",
    "The camera's picture",
    "Keep the page flat, without a reflection on the lines.",
    "It is dark here. Turn on a light, or go where it is brighter.",
    "Nothing could be read yet. You can also type the values by hand.",
    "Type the values by hand",
    "Type the values",
    "The chip opens with three values, which are printed on the document.",
    "The camera may not be used. Allow it in the settings of this machine, or type three values, which are printed on "
    "the document.",
    "There is no camera. Type three values, which are printed on the document.",
    "Document number",
    "Date of birth (day, month, year)",
    "Date of expiry (day, month, year)",
    "Or, where the face of a card has one, only this number:",
    "Card access number",
    "The card access number has six digits.",
    "The document number has letters and digits only.",
    "The date of birth is no date. Type day, month and year.",
    "The date of expiry is no date. Type day, month and year.",
    "Use the camera",
    "Connect the card reader",
    "No card reader is connected to this machine.",
    "Lay the document on the reader",
    "Open the passport at the page with the photo and lay it on the reader with its cover down.",
    "Lay the card flat on the reader.",
    "Leave the document on the reader until all is read.",
    "Opening the chip",
    "Reading the chip",
    "Checking the chip",
    "Data of the page",
    "Portrait",
    "Picture of the signature",
    "Further data of the person",
    "Further data of the document",
    "Seal of the state",
    "Set-up of the chip",
    "#%",
    "read",
    "The page was read",
    "Compare with the document before you go on.",
    "Document",
    "Name",
    "Given names",
    "Date of birth",
    "Nationality",
    "Sex",
    "Issued by",
    "Date of expiry",
    "dd.mm.yyyy",
    "The chip was read",
    "The document is genuine.",
    "The document was read. Not every check could be made here.",
    "The document has failed a check.",
    "The data is unchanged.",
    "The data was changed.",
    "Whether the data was changed is not known.",
    "The seal of the data holds.",
    "The seal of the data is false.",
    "The seal of the data could not be checked.",
    "The state that issued the document is known.",
    "The document was not issued by a known state.",
    "The issuing state could not be checked.",
    "The seal was not withdrawn.",
    "The seal was withdrawn.",
    "Whether the seal was withdrawn is not known.",
    "The seal was valid when the document was made.",
    "The seal was not valid when the document was made.",
    "The dates of the seal could not be checked.",
    "The chip is no copy.",
    "The chip may be a copy.",
    "Whether the chip is a copy is not known.",
    "Sending the document",
    "This takes a moment.",
    "There is no card reader",
    "Connect a card reader to this machine, then try again.",
    "The card reader cannot be used",
    "The machine's service for card readers does not answer. Ask the people who run this machine, then try again.",
    "No chip was found",
    "Look for the sign of a chip on the cover or on the card. If the document has it, take off any sleeve, lay the "
    "document on the middle of the reader, and try again.",
    "The chip does not open",
    "The values do not fit to this document. Type them as they are printed on the document.",
    "The document was taken away",
    "Try again, and leave the document on the reader until all is read.",
    "This chip cannot be read",
    "The chip is none of a passport or an identity card, or needs a reader of another kind. Try another document.",
    "The reading took too long",
    "Turn the document or move it a little on the reader, and try again.",
    "The chip's answers are damaged",
    "Take the document off the reader, lay it down again, and try once more.",
    "The reading was stopped",
    "Try again when you are ready.",
    "The document could not be sent",
    "There is no connection to the service. Look after the network, then send again.",
    "The service is not the right one",
    "The connection to the service is not safe, and nothing was sent. Use another network, or update the application.",
    "The session has ended",
    "Begin again with a new activation code.",
    "The service does not take documents from here",
    "The service is busy",
    "Wait for a while, then send again.",
    "The service has refused the document",
    "Begin again. If that does not help, ask the people who run the service.",
    "This is a document of another kind",
    "This kind of document is not asked for here. Show another document.",
    "Try again",
    "Send again",
    "Show another document",
    "Go on without the chip",
    "End the reading",
});

/// A text of the screens. A text that is missing in the list above, and so perhaps in the tables, does not compile.
class ScreenText {
public:
    constexpr ScreenText() = default;

    consteval ScreenText(const char* text) // NOLINT(google-explicit-constructor): stands for the text
        : key_{text} {
        if (std::ranges::find(screenTexts, key_) == screenTexts.end()) {
            throw "no text of the screens";
        }
    }

    constexpr std::string_view key() const { return key_; }

    constexpr bool isEmpty() const { return key_.empty(); }

    constexpr bool operator==(const ScreenText&) const = default;
    constexpr auto operator<=>(const ScreenText&) const = default;

private:
    std::string_view key_;
};

} // namespace kivo::reader
