// The time in which answers to a join are decoded, beside a program that makes the same session of what simdjson reads,
// and beside a program that only lists the settings, in which none can be looked up. The time in which a scan is
// written into JSON, beside a program that validates with simdjson.
#include "Measuring.hpp"
#include "platform/json/Json.hpp"

#include <kivo/ActivationResponse.hpp>

#include <simdjson.h>

#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace kivo::bench;

/// An answer to a join whose settings have about `size` bytes.
std::string answerOf(std::size_t size) {
    std::string answer =
        R"({"response-type":"data","tid":"3c0a55b3-7a68-4b3a-a27e-1f7d3f1c60a0","idp-config":{"retry-limit":"3")";
    for (int i = 0; answer.size() < size; ++i) {
        answer +=
            ",\"setting-" + std::to_string(i) + "\":\"https://identity.example/" + std::string(size / 64, 'p') + '"';
    }
    return answer + "}}";
}

using Session = kivo::ActivationResponse;
using simdjson::dom::element;

/// The session of the answer, as the SDK decodes it.
Session sessionIn(const element& answer) {
    Session session;
    const auto text = [](const element& value) { return std::string_view{value.get_string().value()}; };
    const auto read = [&](const element& value, Session::Settings& settings) {
        auto place = settings.end();
        for (const auto& [name, setting] : value.get_object()) {
            place = std::next(settings.emplace_hint(place, name, text(setting)));
        }
    };
    for (const auto& [name, value] : answer.get_object()) {
        if (name == "response-type") {
            session.responseType = text(value);
        } else if (name == "response-code") {
            session.responseCode = text(value);
        } else if (name == "tid") {
            session.tId = text(value);
        } else if (name == "idp-config") {
            read(value, session.idpConfig);
        } else if (name == "app-config") {
            read(value, session.appConfig);
        } else if (name == "idp-biodata") {
            read(value, session.idpBiodata);
        } else if (name == "idp-facemap") {
            read(value, session.idpFaceMap);
        }
    }
    return session;
}

/// The names and texts of the settings, one after another.
std::vector<std::pair<std::string, std::string>> textsIn(const element& answer) {
    std::vector<std::pair<std::string, std::string>> texts;
    for (const auto& [name, value] : answer.get_object()) {
        if (value.is_object()) {
            for (const auto& [key, text] : value.get_object()) {
                texts.emplace_back(std::string_view{key}, text.get_string().value());
            }
        }
    }
    return texts;
}

void compare(const char* name, const std::string& answer, int rounds) {
    std::vector<double> own;
    std::vector<double> other;
    std::vector<double> list;
    simdjson::dom::parser parser;
    const auto texts = textsIn(parser.parse(answer)).size();
    const auto check = [&](std::size_t found) {
        if (found != texts) {
            giveUp("a setting of the answer is missing");
        }
    };
    for (int i = 0; i < rounds; ++i) {
        own.push_back(timed([&] {
            const auto session = Session::decode(answer);
            check(session ? session->idpConfig.size() : 0);
        }));
        other.push_back(timed([&] { check(sessionIn(parser.parse(answer)).idpConfig.size()); }));
    }
    for (int i = 0; i < rounds; ++i) {
        list.push_back(timed([&] { check(textsIn(parser.parse(answer)).size()); }));
    }
    std::printf("%s: SDK %.1f us, simdjson %.1f us, ratio %.2f; simdjson with a list %.1f us\n", name,
                median(own) * 1000, median(other) * 1000, median(own) / median(other), median(list) * 1000);
    found(std::string{"decoding of "} + name + " beside simdjson", median(own) / median(other));
}

/// Writes a text of 10 MiB into JSON, as a face scan is. The other program has no library that escapes many bytes at
/// once: it validates by simdjson, and copies a text that needs no escape.
void compareWriting(int rounds) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string scan(std::size_t{10} << 20, '\0');
    for (std::size_t i = 0; i < scan.size(); ++i) {
        scan[i] = digits[i * 31 % digits.size()];
    }
    std::string body;
    body.reserve(scan.size() + 2);
    std::vector<double> own;
    std::vector<double> other;
    for (int i = 0; i < rounds; ++i) {
        body.clear();
        own.push_back(timed([&] { kivo::json::appendRepaired(body, scan); }));
        body.clear();
        other.push_back(timed([&] {
            if (simdjson::validate_utf8(scan)) {
                body.append(1, '"').append(scan).append(1, '"');
            }
        }));
    }
    std::printf("10 MiB written: SDK %.2f ms, simdjson and a copy %.2f ms, ratio %.2f\n", median(own), median(other),
                median(own) / median(other));
    found("a text of 10 MiB written beside simdjson", median(own) / median(other));
}

} // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 200;
    compare("2 KiB", answerOf(2048), rounds * 10);
    compare("1 MiB", answerOf((std::size_t{1} << 20) - 64 * 1024), rounds / 4 + 1);
    compareWriting(rounds / 4 + 1);
    return EXIT_SUCCESS;
}
