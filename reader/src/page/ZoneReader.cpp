#include "page/ZoneReader.hpp"

#include "files/ZoneLayout.hpp"
#include "page/Leptonica.hpp"
#include "page/LetterCells.hpp"
#include "page/LineReader.hpp"
#include "page/Shades.hpp"
#include "page/ZoneFinder.hpp"
#include "page/ZoneSpelling.hpp"

#include <algorithm>
#include <chrono>
#include <ctime>

namespace kivo::reader {
namespace {

constexpr int longestSide = 2048;
constexpr int leastWidth = 300; // less has no room for 30 letters
constexpr int leastHeight = 100;
constexpr std::chrono::milliseconds patience{700};

// The time that the processor has spent on this thread: a busy machine reads later, and not less.
std::chrono::nanoseconds timeOfThread() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds{time.tv_sec} + std::chrono::nanoseconds{time.tv_nsec};
}

LineStrips upsideDown(const LineStrips& strips) {
    LineStrips turned{strips.rbegin(), strips.rend()};
    for (auto& strip : turned) {
        std::ranges::reverse(strip.bytes);
    }
    return turned;
}

// The cells of the lines. The number of letters is not known beforehand: the right number fits best.
std::vector<SeenLine> cellsIn(const LineStrips& strips) {
    std::vector<SeenLine> lines;
    double bestFit = 0.6; // less is no line of this kind
    for (const auto& layout : zoneLayouts) {
        if (layout.lines != strips.size()) {
            continue;
        }
        double fit = 0;
        std::vector<SeenLine> candidate;
        for (const auto& strip : strips) {
            candidate.push_back({.cells = cellsOf(strip, layout.length)});
            fit += candidate.back().cells.fit / static_cast<double>(strips.size());
        }
        if (fit > bestFit) {
            bestFit = fit;
            lines = std::move(candidate);
        }
    }
    for (std::size_t i = 0; i < lines.size(); ++i) {
        scoreCells(lines[i].cells, strips[i]);
    }
    return lines;
}

// Keeps the image library from writing to the host's standard error what is wrong with a picture.
class Quiet {
public:
    Quiet() = default;

    ~Quiet() { setMsgSeverity(former); }

    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

private:
    int former = setMsgSeverity(L_SEVERITY_NONE);
};

// How much the cells look like letters at all, from 0 to 1.
double likenessOf(const std::vector<SeenLine>& lines) {
    double sum = 0;
    double count = 0;
    for (const auto& line : lines) {
        for (const auto& scores : line.cells.scores) {
            sum += std::ranges::max(scores);
            ++count;
        }
    }
    return count > 0 ? sum / count : 0;
}

class TesseractZoneReader final : public ZoneReader {
public:
    Sight look(const platform::VideoFrame& frame) override {
        const auto end = timeOfThread() + patience;
        const Quiet quiet;
        const auto picture = shadesOf(frame, longestSide);
        if (std::max(picture.width, picture.height) < leastWidth ||
            std::min(picture.width, picture.height) < leastHeight) {
            return {};
        }
        constexpr int darkPaper = 60;
        Sight sight{.isTooDark = shadeBelowWhich(picture, 0.9) < darkPaper};
        bool hasTried = false;
        for (const auto part : {PartOfPage::whole, PartOfPage::lower, PartOfPage::upper}) {
            for (auto& strips : possibleZones(picture, part)) {
                if (hasTried && timeOfThread() > end) {
                    return sight;
                }
                hasTried = true;
                std::ranges::transform(strips, strips.begin(), evened);
                sight.zone = zoneIn(strips);
                if (sight.zone) {
                    return sight;
                }
            }
        }
        return sight;
    }

private:
    std::optional<Zone> zoneIn(LineStrips strips) {
        constexpr double certainlyUpright = 0.8;
        auto lines = cellsIn(strips);
        if (const double likeness = likenessOf(lines); !lines.empty() && likeness < certainlyUpright) {
            auto turned = upsideDown(strips);
            auto turnedLines = cellsIn(turned);
            if (likenessOf(turnedLines) > likeness) {
                strips = std::move(turned);
                lines = std::move(turnedLines);
            }
        }
        auto zone = spelledIn(lines, strips);
        if (!zone && !lines.empty()) { // a picture that is not sharp
            for (std::size_t i = 0; i < lines.size(); ++i) {
                strips[i] = sharpened(strips[i]);
                scoreCells(lines[i].cells, strips[i]);
            }
            zone = spelledIn(lines, strips);
        }
        return zone;
    }

    std::optional<Zone> spelledIn(std::vector<SeenLine>& lines, const LineStrips& strips) {
        for (std::size_t i = 0; i < lines.size(); ++i) {
            lines[i].recognised = placed(reader.read(strips[i]), lines[i].cells);
        }
        return spelledZone(lines);
    }

    LineReader reader;
};

} // namespace

std::unique_ptr<ZoneReader> ZoneReader::make() {
    return std::make_unique<TesseractZoneReader>();
}

} // namespace kivo::reader
