#include "page/ZoneSpelling.hpp"

#include "files/ZoneLayout.hpp"

#include <algorithm>

namespace kivo::reader {
namespace {

// What recognition adds to the likeness of a shape: as much as two letters that look alike differ in a picture of
// middling quality.
constexpr double worthOfRecognition = 0.08;
constexpr std::size_t mostExchanges = 12;
constexpr double leastDoubt = 0.12;

// The letters that may stand in each cell: only digits and fillers, only letters and fillers, or all.
enum class Kind : char { any, digit, letter };

const ZoneLayout* layoutOf(const std::vector<SeenLine>& lines) {
    const auto found = std::ranges::find_if(zoneLayouts, [&](const ZoneLayout& layout) {
        return layout.lines == lines.size() && layout.length == lines[0].cells.scores.size();
    });
    return found == zoneLayouts.end() ? nullptr : &*found;
}

std::vector<std::vector<Kind>> kindsOf(const ZoneLayout& layout) {
    std::vector<std::vector<Kind>> kinds(layout.lines, std::vector<Kind>(layout.length, Kind::any));
    const auto mark = [&](const ZoneField& field, Kind kind) {
        std::fill_n(kinds[field.line].begin() + static_cast<std::ptrdiff_t>(field.at), field.size, kind);
    };
    for (const auto& field : {layout.birth, layout.birthCheck, layout.expiry, layout.expiryCheck, layout.numberCheck,
                              layout.compositeCheck, layout.optionalCheck}) {
        mark(field, Kind::digit);
    }
    for (const auto& field : {documentCodeField, layout.issuer, layout.nationality, layout.sex, layout.names}) {
        mark(field, Kind::letter);
    }
    return kinds;
}

bool mayStand(char letter, Kind kind) {
    const bool isDigit = letter >= '0' && letter <= '9';
    return letter == '<' || kind == Kind::any || isDigit == (kind == Kind::digit);
}

struct Choice {
    char first = '<';
    char second = '<';
    /// How much likelier the first is.
    double lead = 0;
};

Choice choiceOf(const ShapeScores& scores, char recognised, Kind kind) {
    double best = -1;
    double next = -1;
    Choice choice;
    for (std::size_t i = 0; i < scores.size(); ++i) {
        const char letter = zoneLetters[i];
        if (!mayStand(letter, kind)) {
            continue;
        }
        const double score = scores[i] + (letter == recognised ? worthOfRecognition : 0);
        if (score > best) {
            choice.second = choice.first;
            next = best;
            choice.first = letter;
            best = score;
        } else if (score > next) {
            choice.second = letter;
            next = score;
        }
    }
    choice.lead = best - next;
    return choice;
}

struct Doubt {
    std::size_t line;
    std::size_t cell;
    char letter;
    double lead;
};

} // namespace

std::optional<Zone> spelledZone(const std::vector<SeenLine>& lines) {
    const auto* const layout = lines.empty() ? nullptr : layoutOf(lines);
    if (layout == nullptr) {
        return std::nullopt;
    }
    const auto kinds = kindsOf(*layout);
    std::vector<std::string> spelled;
    std::vector<Doubt> doubts;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        std::string text;
        for (std::size_t cell = 0; cell < layout->length; ++cell) {
            const auto choice = choiceOf(lines[i].cells.scores[cell], lines[i].recognised[cell], kinds[i][cell]);
            text += choice.first;
            doubts.push_back({.line = i, .cell = cell, .letter = choice.second, .lead = choice.lead});
        }
        spelled.push_back(std::move(text));
    }
    if (auto zone = parsedZone(spelled)) {
        return zone;
    }
    std::ranges::sort(doubts, {}, &Doubt::lead);
    for (std::size_t i = 0; i < std::min(doubts.size(), mostExchanges) && doubts[i].lead < leastDoubt; ++i) {
        auto exchanged = spelled;
        exchanged[doubts[i].line][doubts[i].cell] = doubts[i].letter;
        if (auto zone = parsedZone(exchanged)) {
            return zone;
        }
    }
    return std::nullopt;
}

} // namespace kivo::reader
