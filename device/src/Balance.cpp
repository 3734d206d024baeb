#include "Balance.hpp"

#include "Text.hpp"

#include <QCache>
#include <QFontMetricsF>
#include <QStringView>
#include <QTextBoundaryFinder>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace kivo::device {
namespace {

constexpr int mostLines = 4;
constexpr qsizetype longestText = 400; // characters
/// What a mark at the end of a line gains: 0.12 is the cost of two lines that differ from their mean by a quarter.
constexpr double gainOfSentence = 0.12;
constexpr double gainOfMark = 0.05;
constexpr qsizetype mostKept = 256;

/// A part of the text inside which no line ends.
struct Piece {
    qsizetype end;
    /// The end without the blanks there.
    qsizetype letters;
    /// The widths inside a line and, without the blanks at the end, at the end of a line.
    double width;
    double lastWidth;
};

bool isJapanese(QChar character) {
    const auto script = character.script();
    return script == QChar::Script_Hiragana || script == QChar::Script_Katakana || script == QChar::Script_Han;
}

/// Whether a phrase may end between the two characters. A Japanese phrase ends with a mark, before a bracket, or with
/// the hiragana of its particle or inflection; "お" and "ご" begin a word.
bool endsPhrase(QChar before, QChar after) {
    if ((!isJapanese(before) && !isJapanese(after)) || !before.isLetterOrNumber() ||
        after.category() == QChar::Punctuation_Open) {
        return true;
    }
    const bool isHonorific = before == QChar{u'お'} || before == QChar{u'ご'};
    return before.script() == QChar::Script_Hiragana && after.script() != QChar::Script_Hiragana && !isHonorific;
}

std::vector<Piece> piecesOf(const QString& text, const QFont& font, bool byPhrases) {
    const QFontMetricsF metrics{font};
    std::vector<Piece> pieces;
    QTextBoundaryFinder breaks{QTextBoundaryFinder::Line, text};
    for (qsizetype begin = 0; breaks.toNextBoundary() > 0;) {
        const auto end = breaks.position();
        if (byPhrases && end < text.size() && !endsPhrase(text[end - 1], text[end])) {
            continue;
        }
        const auto piece = text.mid(begin, end - begin);
        auto last = piece;
        while (last.endsWith(' ')) {
            last.chop(1);
        }
        pieces.push_back({end, begin + last.size(), metrics.horizontalAdvance(piece), metrics.horizontalAdvance(last)});
        begin = end;
    }
    return pieces;
}

/// What a line costs that is longer or shorter than the others, less for a line that ends with a mark.
double costOf(double width, double ideal, QChar last) {
    const auto difference = (width - ideal) / ideal;
    const bool endsSentence = QStringView{u".!?\u3002\uFF1F\u061F"}.contains(last);
    return difference * difference - (endsSentence ? gainOfSentence : last.isPunct() ? gainOfMark : 0);
}

/// The ends of all lines but the last when the pieces stand in that number of lines; absent when they do not fit.
std::optional<std::vector<qsizetype>> evenEnds(const QString& text, const std::vector<Piece>& pieces, double width,
                                               std::size_t lines) {
    const auto count = pieces.size();
    double whole = 0;
    for (const auto& piece : pieces) {
        whole += piece.width;
    }
    const auto ideal = whole / static_cast<double>(lines);

    struct Best {
        double cost = std::numeric_limits<double>::infinity();
        std::size_t begin = 0;
    };

    // The least cost of the pieces before `end` in a number of lines, and where the last of the lines begins.
    std::vector<std::vector<Best>> best{lines + 1, std::vector<Best>{count + 1}};
    best[0][0].cost = 0;
    for (std::size_t line = 1; line <= lines; ++line) {
        for (std::size_t end = 1; end <= count; ++end) {
            const auto& last = pieces[end - 1];
            double taken = last.lastWidth;
            for (auto begin = end; begin-- > 0 && taken <= width; taken += begin > 0 ? pieces[begin - 1].width : 0) {
                const auto cost =
                    best[line - 1][begin].cost +
                    costOf(taken, ideal, end < count && last.letters > 0 ? text[last.letters - 1] : QChar{});
                if (cost < best[line][end].cost) {
                    best[line][end] = {cost, begin};
                }
            }
        }
    }
    if (std::isinf(best[lines][count].cost)) {
        return std::nullopt;
    }
    std::vector<qsizetype> ends;
    auto end = count;
    for (auto line = lines; line > 1; --line) {
        end = best[line][end].begin;
        ends.push_back(pieces[end - 1].end);
    }
    return ends;
}

QString balancedAnew(const QString& text, const QFont& font, double width) {
    const auto lineHeight = QFontMetricsF{font}.height();
    const auto linesOf = [&](const QString& some) {
        return static_cast<int>(std::lround(measureText(some, font, width).height / lineHeight));
    };
    const auto lines = linesOf(text);
    if (lines < 2 || lines > mostLines) {
        return text;
    }
    for (const bool byPhrases : {true, false}) {
        const auto ends = evenEnds(text, piecesOf(text, font, byPhrases), width, static_cast<std::size_t>(lines));
        if (!ends) {
            continue;
        }
        auto result = text;
        for (const auto end : *ends) { // from the last on
            result.insert(end, QChar::LineSeparator);
        }
        return linesOf(result) == lines ? result : text;
    }
    return text;
}

} // namespace

QString balanced(const QString& text, const QFont& font, double width) {
    if (text.size() > longestText || text.contains('\n') || text.contains(QChar::LineSeparator) ||
        QFontMetricsF{font}.horizontalAdvance(text) <= width) {
        return text;
    }
    static QCache<QString, QString> known{mostKept};
    const auto key = font.key() + '\n' + QString::number(width, 'f', 2) + '\n' + text;
    if (const auto* const found = known.object(key)) {
        return *found;
    }
    auto result = balancedAnew(text, font, width);
    known.insert(key, std::make_unique<QString>(result).release());
    return result;
}

} // namespace kivo::device
