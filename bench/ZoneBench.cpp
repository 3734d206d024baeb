// Measures how many machine-readable zones the reader finds in a camera's pictures, for each fault of a picture, and
// how long a picture takes. The program draws the pages with random names and numbers.
//
// usage: kivo-bench-zones [PICTURES_OF_EACH_KIND [FOLDER]], where FOLDER gets the pictures that were not read
#include "Measuring.hpp"
#include "page/ZoneReader.hpp"
#include "reader/DrawnPage.hpp"

#include <array>
#include <cmath>
#include <fstream>
#include <functional>
#include <numbers>
#include <random>

namespace {

using kivo::bench::timed;
using kivo::reader::checkDigit;
using kivo::reader::ZoneReader;
using kivo::test::DrawnPages;
using kivo::test::View;
using Random = std::mt19937;
using Lines = std::vector<std::string>;

double uniform(Random& random, double least, double most) {
    return std::uniform_real_distribution<double>{least, most}(random);
}

std::string letters(Random& random, std::string_view among, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += among[static_cast<std::size_t>(uniform(random, 0, static_cast<double>(among.size()) - 0.001))];
    }
    return text;
}

std::string twoDigits(double number) {
    const auto value = static_cast<int>(number);
    return std::string{static_cast<char>('0' + value / 10), static_cast<char>('0' + value % 10)};
}

std::string withDigit(const std::string& field) {
    return field + *checkDigit(field);
}

std::string filled(std::string text, std::size_t size) {
    text.resize(size, '<');
    return text;
}

/// The lines of a document of one of the three sizes.
Lines randomLines(Random& random) {
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    constexpr std::string_view digits = "0123456789";
    constexpr std::string_view unlike = "0123456789CFGHJKLMNPRTVWXYZ";
    const auto name = [&](double least, double most) {
        return letters(random, alphabet, static_cast<std::size_t>(uniform(random, least, most)));
    };
    const auto date = [&] {
        return withDigit(twoDigits(uniform(random, 0, 99.9)) + twoDigits(uniform(random, 1, 12.9)) +
                         twoDigits(uniform(random, 1, 28.9)));
    };
    // Numbers as states make them: a letter or two before digits, digits alone, or letters that no digit resembles.
    const auto form = uniform(random, 0, 4);
    const auto letterCount = static_cast<std::size_t>(form);
    const auto number =
        withDigit(form < 3 ? letters(random, alphabet, letterCount) + letters(random, digits, 9 - letterCount)
                           : letters(random, unlike, 9));
    constexpr std::array<std::string_view, 10> states{"UTO", "D<<", "FRA", "GBR", "NLD",
                                                      "POL", "ROU", "OMN", "USA", "ZWE"};
    const std::string state{states.at(static_cast<std::size_t>(uniform(random, 0, 9.99)))};
    const auto names = name(3, 12) + "<<" + name(3, 9) + (uniform(random, 0, 1) < 0.5 ? "<" + name(3, 8) : "");
    const auto birth = date();
    const auto sex = letters(random, "MF<", 1);
    const auto expiry = date();
    const auto kind = uniform(random, 0, 3);
    if (kind < 1) {
        const auto optional = withDigit(filled(uniform(random, 0, 1) < 0.5 ? letters(random, digits, 9) : "", 14));
        const auto second = number + state + birth + sex + expiry + optional;
        return {filled("P<" + state + names, 44), second + *checkDigit(number + birth + expiry + optional)};
    }
    if (kind < 2) {
        const auto second = number + state + birth + sex + expiry + filled("", 7);
        return {filled("I<" + state + names, 36), second + *checkDigit(number + birth + expiry + filled("", 7))};
    }
    const auto first = filled("ID" + state + number, 30);
    const auto second = birth + sex + expiry + state + filled("", 11);
    return {first, second + *checkDigit(first.substr(5) + birth + expiry + filled("", 11)), filled(names, 30)};
}

struct Kind {
    const char* name;
    std::function<void(View&, Random&)> change;
};

const std::vector<Kind> kinds{
    {"as it should be", [](View&, Random&) {}},
    {"rotated by up to 15 degrees", [](View& view, Random& random) { view.rotation = uniform(random, -15, 15); }},
    {"seen from the side",
     [](View& view, Random& random) {
         view.slantToSide = uniform(random, -0.2, 0.2);
         view.slantToTop = uniform(random, -0.2, 0.2);
     }},
    {"blurred", [](View& view, Random& random) { view.blur = uniform(random, 1.4, 2.4); }},
    {"noisy", [](View& view, Random& random) { view.noise = uniform(random, 12, 24); }},
    {"dim, with noise",
     [](View& view, Random& random) {
         view.light = uniform(random, 0.2, 0.35);
         view.noise = 4;
     }},
    {"in uneven light", [](View& view, Random& random) { view.shadow = uniform(random, 0.4, 0.7); }},
    {"small", [](View& view, Random& random) { view.size = uniform(random, 0.45, 0.6); }},
    {"all of it, less of each", [](View& view, Random& random) {
         view.rotation = uniform(random, -8, 8);
         view.slantToSide = uniform(random, -0.08, 0.08);
         view.slantToTop = uniform(random, -0.08, 0.08);
         view.blur = uniform(random, 0.8, 1.3);
         view.noise = uniform(random, 5, 9);
         view.light = uniform(random, 0.5, 0.9);
         view.shadow = uniform(random, 0.1, 0.3);
         view.size = uniform(random, 0.65, 0.8);
     }}};

/// Makes the page as small as it must be to lie in the picture with all its corners.
void keepInside(View& view, const Lines& lines) {
    const double angle = std::abs(view.rotation) * std::numbers::pi / 180;
    const double aspect = lines.size() == 3 ? 0.63 : 0.705;
    const double slant = 1 + std::abs(view.slantToSide) + std::abs(view.slantToTop);
    const double height = (std::sin(angle) + aspect * std::cos(angle)) * slant;
    view.size = std::min(view.size, 0.98 * view.height / view.width / height);
}

/// As a text form of shades, which every viewer of pictures reads.
void save(const kivo::platform::VideoFrame& frame, const std::string& path) {
    std::ofstream file{path, std::ios::binary};
    file << "P5 " << frame.width << ' ' << frame.height << " 255\n";
    file.write(reinterpret_cast<const char*>(frame.bytes.data()), static_cast<std::streamsize>(frame.bytes.size()));
}

struct Share {
    int pictures = 0;
    int read = 0;
    int wrong = 0;
    int inEveryLetter = 0;
    std::vector<double> times;
};

void print(const char* name, const Share& share) {
    auto times = share.times;
    std::ranges::sort(times);
    const auto of = [&](int count) { return 100.0 * count / share.pictures; };
    std::printf("%-30s %8d %8.1f %8.1f %8.1f %8.0f %8.0f\n", name, share.pictures, of(share.read),
                of(share.inEveryLetter), of(share.wrong), times[times.size() / 2], times.back());
    std::fflush(stdout);
}

} // namespace

int main(int count, char** arguments) {
    const int pictures = count > 1 ? std::atoi(arguments[1]) : 100;
    if (pictures < 1) {
        kivo::bench::giveUp("usage: kivo-bench-zones [PICTURES_OF_EACH_KIND [FOLDER]]");
    }
    const DrawnPages pages;
    const auto reader = ZoneReader::make();
    std::printf("%-30s %8s %8s %8s %8s %8s %8s\n", "", "pictures", "read %", "letters", "wrong %", "ms", "ms most");
    Share all;
    unsigned seed = 1;
    for (const auto& [name, change] : kinds) {
        Share share;
        for (int i = 0; i < pictures; ++i) {
            Random random{++seed};
            View view{.size = uniform(random, 0.75, 0.9),
                      .rotation = uniform(random, -2, 2),
                      .hasSharpLetters = seed % 2 == 0,
                      .seed = seed};
            const auto lines = randomLines(random);
            change(view, random);
            if (lines.size() == 3) {
                view.size *= 0.85; // a card is wider for its height
            }
            keepInside(view, lines);
            const auto frame = pages.frame(lines, view);
            ZoneReader::Sight sight;
            share.times.push_back(timed([&] { sight = reader->look(frame); }));
            const auto truth = kivo::reader::parsedZone(lines);
            if (!truth) {
                kivo::bench::giveUp("a page was drawn with lines that are no zone");
            }
            ++share.pictures;
            const bool agrees = sight.zone && sight.zone->documentNumber == truth->documentNumber &&
                                sight.zone->dateOfBirth == truth->dateOfBirth &&
                                sight.zone->dateOfExpiry == truth->dateOfExpiry;
            share.read += agrees ? 1 : 0;
            share.wrong += sight.zone && !agrees ? 1 : 0;
            share.inEveryLetter += sight.zone && sight.zone->lines == lines ? 1 : 0;
            if (!agrees && count > 2) {
                for (const auto& line : lines) {
                    std::fprintf(stderr, "%u %s\n", seed, line.c_str());
                }
                save(frame, std::string{arguments[2]} + "/" + std::to_string(seed) + ".pgm");
            }
        }
        print(name, share);
        all.pictures += share.pictures;
        all.read += share.read;
        all.wrong += share.wrong;
        all.inEveryLetter += share.inEveryLetter;
        all.times.insert(all.times.end(), share.times.begin(), share.times.end());
    }
    print("all", all);
    kivo::bench::found("zones that are not read", 100.0 * (all.pictures - all.read) / all.pictures);
}
