#include "page/LetterCells.hpp"

#include "page/Leptonica.hpp"

#include <algorithm>
#include <array>
#include <cmath>

namespace kivo::reader {
namespace {

constexpr int firstRow = 10; // of a strip, a little above the letters
constexpr int lastRow = 54;

// The ink in each column, summed up from the left: 1 for a column that is black from top to bottom of the letters.
class Ink {
public:
    explicit Ink(const Shades& strip) {
        sums.push_back(0);
        for (int x = 0; x < strip.width; ++x) {
            double column = 0;
            for (int y = firstRow; y < lastRow; ++y) {
                column += (255 - strip.at(x, y)) / 255.0;
            }
            sums.push_back(sums.back() + std::min(1.0, column / 8));
        }
    }

    double between(double left, double right) const { return (sumUpTo(right) - sumUpTo(left)) / (right - left); }

private:
    double sumUpTo(double x) const {
        const double place = std::clamp(x, 0.0, static_cast<double>(sums.size() - 1));
        const auto index = std::min(static_cast<std::size_t>(place), sums.size() - 2);
        return std::lerp(sums[index], sums[index + 1], place - static_cast<double>(index));
    }

    std::vector<double> sums;
};

struct Comb {
    double first;
    double pitch;
    double bend; // how far the middle cell lies from the middle between first and last, in pitches

    double middle(double cell, double count) const {
        const double along = cell / (count - 1);
        return first + pitch * (cell + bend * 4 * along * (1 - along));
    }

    double pitchAt(double cell, double count) const {
        return pitch * (1 + bend * 4 * (1 - 2 * cell / (count - 1)) / (count - 1));
    }
};

double fitOf(const Ink& ink, const Comb& comb, std::size_t count, std::size_t every) {
    const auto cells = static_cast<double>(count);
    double inside = 0;
    double between = 0;
    double looked = 0;
    for (std::size_t i = 0; i < count; i += every) {
        const double middle = comb.middle(static_cast<double>(i), cells);
        inside += std::min(1.0, 2 * ink.between(middle - 0.3 * comb.pitch, middle + 0.3 * comb.pitch));
        const double edge = middle - 0.5 * comb.pitch;
        between += ink.between(edge - 0.1 * comb.pitch, edge + 0.1 * comb.pitch);
        ++looked;
    }
    return (inside - between) / looked;
}

double score(const ShapeScores& scores, char letter) {
    const auto at = zoneLetters.find(letter);
    return at == std::string_view::npos ? 0 : scores[at];
}

// Seen from the side, the distance of letters shrinks with the square of what their height shrinks by.
double heightAt(const LetterCells& cells, std::size_t cell) {
    const double middle = cells.pitches[cells.pitches.size() / 2];
    return std::sqrt(middle * cells.pitches[cell]);
}

// How much higher the letters are than their distance tells: less than 1 where the page leans back.
double heightRatio(const Shades& strip, const LetterCells& cells) {
    double best = 0;
    double bestRatio = 1;
    for (const double ratio : {0.86, 0.93, 1.0, 1.08, 1.16}) {
        double sum = 0;
        for (std::size_t i = 0; i < cells.middles.size(); i += 4) {
            sum += std::ranges::max(shapeScores(strip, cells.middles[i], cells.pitches[i], ratio * heightAt(cells, i)));
        }
        if (sum > best) {
            best = sum;
            bestRatio = ratio;
        }
    }
    return bestRatio;
}

} // namespace

Shades evened(const Shades& strip) {
    constexpr int reach = 24;
    auto result = strip;
    std::vector<int> grounds;
    for (int x = 0; x < strip.width; ++x) { // the light of a column: bright shades around
        std::array<int, 256> counts{};
        int all = 0;
        for (int column = std::max(0, x - reach); column < std::min(strip.width, x + reach); column += 2) {
            for (int y = 0; y < strip.height; y += 2) {
                ++counts[strip.at(column, y)];
                ++all;
            }
        }
        int left = all * 7 / 10;
        int shade = 0;
        while (shade < 255 && (left -= counts[static_cast<std::size_t>(shade)]) > 0) {
            ++shade;
        }
        grounds.push_back(std::max(shade, 1));
    }
    for (int y = 0; y < strip.height; ++y) {
        for (int x = 0; x < strip.width; ++x) {
            auto& byte = result.bytes[static_cast<std::size_t>(y) * static_cast<std::size_t>(strip.width) +
                                      static_cast<std::size_t>(x)];
            byte = static_cast<std::uint8_t>(std::min(255, byte * 255 / grounds[static_cast<std::size_t>(x)]));
        }
    }
    const int dark = shadeBelowWhich(result, 0.03);
    const int bright = std::max(dark + 1, 255 - (255 - dark) / 8);
    for (auto& byte : result.bytes) {
        byte = static_cast<std::uint8_t>(std::clamp((byte - dark) * 255 / (bright - dark), 0, 255));
    }
    return result;
}

Shades sharpened(const Shades& strip) {
    constexpr int reach = 4;
    constexpr float much = 2;
    const auto pix = pixOf(strip);
    const PixPointer sharp{pix ? pixUnsharpMaskingGray(pix.get(), reach, much) : nullptr};
    return sharp ? shadesOf(sharp.get()) : strip;
}

LetterCells cellsOf(const Shades& strip, std::size_t count) {
    const Ink ink{strip};
    const auto cells = static_cast<double>(count);
    constexpr double margin = 32;
    const double likely = std::max(4.0, (strip.width - 2 * margin) / (cells - 0.4));
    Comb best{.first = margin + 0.3 * likely, .pitch = likely, .bend = 0};
    double bestFit = -1;
    // Tries so many steps to both sides of the best comb so far: `reach` is the largest change.
    const auto search = [&](const Comb& reach, const std::array<int, 3>& steps, std::size_t every) {
        const Comb around = best;
        bestFit = -1;
        for (int shift = -steps[0]; shift <= steps[0]; ++shift) {
            for (int pitch = -steps[1]; pitch <= steps[1]; ++pitch) {
                for (int bend = -steps[2]; bend <= steps[2]; ++bend) {
                    const Comb comb{.first = around.first + reach.first * likely * shift / steps[0],
                                    .pitch = around.pitch + reach.pitch * likely * pitch / steps[1],
                                    .bend = around.bend + reach.bend * bend / steps[2]};
                    if (const double fit = fitOf(ink, comb, count, every); fit > bestFit) {
                        bestFit = fit;
                        best = comb;
                    }
                }
            }
        }
    };
    search({.first = 0.5, .pitch = 0.07, .bend = 1.35}, {5, 10, 9}, 2);
    // A comb that begins a letter too early or too late fits nearly as well.
    const Comb coarse = best;
    Comb winner = best;
    double winnersFit = -1;
    for (int letters = -2; letters <= 2; ++letters) {
        best = coarse;
        best.first += letters * best.pitch;
        search({.first = 0.12, .pitch = 0.007, .bend = 0.15}, {3, 3, 3}, 1);
        search({.first = 0.03, .pitch = 0.002, .bend = 0.04}, {1, 1, 1}, 1);
        if (bestFit > winnersFit) {
            winnersFit = bestFit;
            winner = best;
        }
    }
    best = winner;
    bestFit = winnersFit;
    LetterCells found{.fit = bestFit};
    for (std::size_t i = 0; i < count; ++i) {
        found.middles.push_back(best.middle(static_cast<double>(i), cells));
        found.pitches.push_back(best.pitchAt(static_cast<double>(i), cells));
    }
    return found;
}

void scoreCells(LetterCells& cells, const Shades& strip) {
    const double ratio = heightRatio(strip, cells);
    cells.scores.clear();
    for (std::size_t i = 0; i < cells.middles.size(); ++i) {
        cells.scores.push_back(shapeScores(strip, cells.middles[i], cells.pitches[i], ratio * heightAt(cells, i)));
    }
}

std::string placed(std::string_view recognised, const LetterCells& cells) {
    constexpr double costOfNone = 0.35;
    const auto rows = cells.scores.size();
    const auto columns = recognised.size();
    if (columns > 2 * rows) {
        return std::string(rows, ' ');
    }
    // The costs of the best way to have used so many cells and so many letters, and the step that leads there.
    enum class Step : char { both, cellOnly, letterOnly };
    std::vector<double> costs((rows + 1) * (columns + 1), 1e9);
    std::vector<Step> steps(costs.size(), Step::both);
    const auto at = [&](std::size_t cell, std::size_t letter) { return cell * (columns + 1) + letter; };
    costs[0] = 0;
    const auto offer = [&](std::size_t to, double cost, Step step) {
        if (cost < costs[to]) {
            costs[to] = cost;
            steps[to] = step;
        }
    };
    for (std::size_t cell = 0; cell <= rows; ++cell) {
        for (std::size_t letter = 0; letter <= columns; ++letter) {
            const double cost = costs[at(cell, letter)];
            if (cell < rows && letter < columns) {
                offer(at(cell + 1, letter + 1), cost + 1 - score(cells.scores[cell], recognised[letter]), Step::both);
            }
            if (cell < rows) {
                offer(at(cell + 1, letter), cost + costOfNone, Step::cellOnly);
            }
            if (letter < columns) {
                offer(at(cell, letter + 1), cost + costOfNone, Step::letterOnly);
            }
        }
    }
    std::string line(rows, ' ');
    for (std::size_t cell = rows, letter = columns; cell > 0 || letter > 0;) {
        switch (steps[at(cell, letter)]) {
        case Step::both:
            line[--cell] = recognised[--letter];
            break;
        case Step::cellOnly:
            --cell;
            break;
        case Step::letterOnly:
            --letter;
            break;
        }
    }
    return line;
}

} // namespace kivo::reader
