// The time in which answers to a join are decoded, beside that of simdjson for the same bytes.
#include "Measuring.hpp"
#include "platform/json/Json.hpp"

#include <kivo/ActivationResponse.hpp>

#include <simdjson.h>

#include <cstdio>
#include <cstdlib>
#include <string>
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

/// A copy as an SDK needs it: the texts outlive the parser.
std::size_t copyAll(const simdjson::dom::element& element) {
    std::size_t bytes = 0;
    for (const auto& [name, value] : element.get_object()) {
        std::vector<std::pair<std::string, std::string>> texts;
        if (value.is_object()) {
            for (const auto& [key, text] : value.get_object()) {
                texts.emplace_back(std::string_view{key}, text.get_string().value());
            }
        }
        bytes += name.size() + texts.size();
    }
    return bytes;
}

void compare(const char* name, const std::string& answer, int rounds) {
    std::vector<double> own;
    std::vector<double> other;
    simdjson::dom::parser parser;
    for (int i = 0; i < rounds; ++i) {
        own.push_back(timed([&] {
            if (!kivo::ActivationResponse::decode(answer)) {
                giveUp("the answer is no session");
            }
        }));
        other.push_back(timed([&] {
            if (copyAll(parser.parse(answer)) == 0) {
                giveUp("simdjson refuses the answer");
            }
        }));
    }
    std::printf("%s: SDK %.1f us, simdjson %.1f us, ratio %.2f\n", name, median(own) * 1000, median(other) * 1000,
                median(own) / median(other));
    found(std::string{"decoding of "} + name + " beside simdjson", median(own) / median(other));
}

} // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 200;
    compare("2 KiB", answerOf(2048), rounds * 10);
    compare("1 MiB", answerOf((std::size_t{1} << 20) - 64 * 1024), rounds / 4 + 1);
    return EXIT_SUCCESS;
}
