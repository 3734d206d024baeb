#include "Options.hpp"
#include "PinsFile.hpp"
#include "Sources.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace {

enum ExitStatus { done = 0, notListed = 1, cannotGoOn = 2 };

void say(const std::string& text) {
    std::fputs(text.c_str(), stdout);
}

ExitStatus complain(const std::string& text, ExitStatus status = cannotGoOn) {
    std::fflush(stdout);
    std::fprintf(stderr, "kivo-pins: %s\n", text.c_str());
    return status;
}

void complainOf(const std::string& file, const std::vector<std::string>& faults) {
    std::ranges::for_each(faults, [&](const auto& fault) { complain(file + ": " + fault); });
}

std::string counted(std::size_t number, const std::string& what) {
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

bool isIn(const std::vector<std::string>& list, const std::string& pin) {
    return std::ranges::find(list, pin) != list.end();
}

/// Prints the wanted keys of all sources and collects their pins.
ExitStatus collect(const pins::Options& options, std::vector<std::string>& found) {
    const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    for (const auto& source : options.sources) {
        const auto keys = pins::keysOf(source);
        if (!keys) {
            return complain(keys.error());
        }
        say(source + "\n");
        for (const auto& key : *keys) {
            if (options.only.empty() || options.only == key.kind) {
                say(text(key, now));
                if (key.pin && !isIn(found, *key.pin)) {
                    found.push_back(*key.pin);
                }
            }
        }
    }
    if (found.empty() && !options.sources.empty()) {
        return complain(options.only.empty() ? "there is no key that the SDK can pin"
                                             : "there is no " + options.only + " that the SDK can pin");
    }
    return done;
}

ExitStatus write(const std::string& file, const std::vector<std::string>& found) {
    std::vector<std::string> all;
    std::error_code unknown;
    if (std::filesystem::exists(file, unknown) || unknown) {
        auto list = pins::readList(file);
        if (!list) {
            return complain(list.error() + "; move it away and I make a new one");
        }
        if (!list->pins.empty() || !list->isArrayOfText) {
            complainOf(file, list->faults);
        }
        if (!list->isArrayOfText) {
            return complain(file + " is not a list of pins; move it away and I make a new one");
        }
        all = std::move(list->pins);
    }
    const auto before = all.size();
    std::ranges::copy_if(found, std::back_inserter(all), [&](const auto& pin) { return !isIn(all, pin); });
    if (const auto problem = pins::writeList(file, all); !problem.empty()) {
        return complain(problem);
    }
    say(file + ": added " + counted(all.size() - before, "pin") + ", " + counted(all.size(), "pin") + " in all\n");
    return done;
}

ExitStatus check(const std::string& file, const std::vector<std::string>& found) {
    const auto list = pins::readList(file);
    if (!list) {
        return complain(list.error());
    }
    complainOf(file, list->faults);
    const auto listed = std::ranges::count_if(found, [&](const auto& pin) { return isIn(list->pins, pin); });
    if (found.empty()) {
        say(file + ": " + counted(list->pins.size(), "pin") + "\n");
    } else if (listed == 0) {
        return complain(file + ": none of the pins above is in the list; the SDK would refuse this server", notListed);
    } else {
        say(file + ": " + std::to_string(listed) + " of " + counted(found.size(), "pin") + " in the list\n");
    }
    return list->faults.empty() ? done : notListed;
}

ExitStatus run(const pins::Options& options) {
    std::vector<std::string> found;
    auto status = collect(options, found);
    if (status == done && !options.write.empty()) {
        status = write(options.write, found);
    }
    if (status == done && !options.check.empty()) {
        status = check(options.check, found);
    }
    return status;
}

} // namespace

int main(int argc, char** argv) {
    const auto options = pins::parse({argv + 1, argv + argc});
    if (!options) {
        return complain(options.error() + "; kivo-pins --help tells more");
    }
    if (options->help) {
        say(pins::usage());
        return done;
    }
    return run(*options);
}
