#include "Keys.hpp"
#include "PinsFile.hpp"
#include "Source.hpp"
#include "program/CommandLine.hpp"
#include "program/Program.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <expected>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace {

struct Options {
    /// Files and servers.
    std::vector<std::string> sources;
    /// The kind of certificate to print, "leaf" or "intermediate"; empty for all kinds.
    std::string only;
    /// The list to which the pins are added; empty for none.
    std::string write;
    /// The list in which the pins are looked up; empty for none.
    std::string check;
};

enum ExitStatus { done = 0, notListed = 1, cannotGoOn = 2 };

void say(const std::string& text) {
    std::fputs(text.c_str(), stdout);
}

ExitStatus complain(const std::string& text, ExitStatus status = cannotGoOn) {
    program::complain(text);
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
ExitStatus collect(const Options& options, std::vector<std::string>& found) {
    const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    for (const auto& source : options.sources) {
        const auto here = pins::keysOf(source);
        if (!here) {
            return complain(here.error());
        }
        say(pins::nameOf(source) + "\n");
        for (const auto& key : here->keys) {
            if (options.only.empty() || options.only == key.kind) {
                say(text(key, now));
                if (key.pin && !isIn(found, *key.pin)) {
                    found.push_back(*key.pin);
                }
            }
        }
        std::ranges::for_each(here->leftOut, [](const auto& part) { complain(part); });
    }
    if (found.empty() && !options.sources.empty()) {
        return complain(options.only.empty() ? "there is no key that the SDK can pin"
                                             : "there is no " + options.only + " that the SDK can pin");
    }
    return done;
}

ExitStatus write(const std::string& file, const std::vector<std::string>& found) {
    const auto change = pins::ListUnderChange::open(file);
    if (!change) {
        return complain(change.error());
    }
    auto list = pins::readList(file);
    if (!list) {
        return complain(list.error() + "; move it away to have a new list made");
    }
    std::vector<std::string> all;
    if (*list) {
        if (!(*list)->pins.empty() || !(*list)->isArrayOfText) {
            complainOf(file, (*list)->faults);
        }
        if (!(*list)->isArrayOfText) {
            return complain(file + " is not a list of pins; move it away to have a new list made");
        }
        all = std::move((*list)->pins);
    }
    const auto before = all.size();
    std::ranges::copy_if(found, std::back_inserter(all), [&](const auto& pin) { return !isIn(all, pin); });
    if (const auto problem = change->write(all); !problem.empty()) {
        return complain(problem);
    }
    say(file + ": added " + counted(all.size() - before, "pin") + ", " + counted(all.size(), "pin") + " in all\n");
    return done;
}

ExitStatus check(const std::string& file, const std::vector<std::string>& found) {
    const auto read = pins::readList(file);
    if (!read || !*read) {
        return complain(read ? file + " does not exist" : read.error());
    }
    const auto& list = *read;
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

ExitStatus run(const Options& options) {
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

constexpr auto purpose =
    "Prints the pins by which the Kivo SDK knows a server, and keeps the list that a host ships as\n"
    "readid_certificates.plist. A SOURCE is one of\n"
    "\n"
    "  FILE                   certificates, a public or a private key, in PEM or DER form\n"
    "  -                      the same from standard input\n"
    "  HOST[:PORT]            a server (port 443), also as https://HOST; its chain is shown, not trusted\n";

constexpr auto advice =
    "One pin of a server's chain in the list is enough for the SDK. The pin of a leaf stands for one key; the\n"
    "pin of an intermediate lets every certificate through that its authority ever issues. Before you take\n"
    "a pin from a server over the network, make sure that it is the right one: compare with its operator.\n";

/// The options of the command line, or the status to end with when the help was printed or a mistake was told.
std::expected<Options, int> parse(int argc, const char* const* argv) {
    Options options;
    program::CommandLine line{
        {.name = "kivo-pins",
         .arguments = "[options] SOURCE...",
         .purpose = purpose,
         .statuses = {
             {done, "done; with --check: one of the pins is in a faultless list"},
             {notListed, "with --check: no pin is, or the list has a fault; or standard output could not be written"},
             {cannotGoOn, "a file or a server could not be read or written, or the command line is wrong"}}}};
    const auto into = [](std::string& target) {
        return [&target](const std::string& value) {
            target = value;
            return std::string{};
        };
    };
    line.value("--only", "KIND", "only the leaf, or only the intermediate",
               program::oneOf({"leaf", "intermediate"}, options.only));
    line.value("--write", "FILE.plist", "add the pins to a list, which is made if need be", into(options.write));
    line.value("--check", "FILE.plist",
               "tell whether one of the pins is in a list, and the faults of the list;\n"
               "without a SOURCE, look at the list alone",
               into(options.check));
    line.arguments([&](const auto& source) {
        options.sources.push_back(source);
        return std::string{source.empty() ? "a SOURCE is empty" : ""};
    });
    line.explain(advice);
    if (const auto status = line.read(argc, argv)) {
        return std::unexpected{*status};
    }
    if (options.sources.empty() && (options.check.empty() || !options.write.empty())) {
        return std::unexpected{line.refuse("name a file or a server to take pins from")};
    }
    return options;
}

} // namespace

int main(int argc, char** argv) {
    return program::run("kivo-pins", [&]() -> int {
        const auto options = parse(argc, argv);
        return options ? run(*options) : options.error();
    });
}
