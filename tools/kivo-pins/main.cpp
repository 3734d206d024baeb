#include "Keys.hpp"
#include "PinsFile.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <expected>
#include <filesystem>
#include <string>
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
    bool help = false;
};

constexpr auto usage =
    "usage: kivo-pins [options] SOURCE...\n"
    "\n"
    "Prints the pins by which the Kivo SDK knows a server, and keeps the list that a host ships as\n"
    "readid_certificates.plist. A SOURCE is one of\n"
    "\n"
    "  a file                 certificates, a public or a private key, in PEM or DER form\n"
    "  HOST[:PORT]            a server (port 443); its chain is shown, not trusted\n"
    "\n"
    "  --only KIND            only the leaf, or only the intermediate\n"
    "  --write FILE.plist     add the pins to a list, which is made if need be\n"
    "  --check FILE.plist     tell whether one of the pins is in a list, and the faults of the list;\n"
    "                         without a SOURCE, look at the list alone\n"
    "  --help                 this text\n"
    "\n"
    "One pin of a server's chain in the list is enough for the SDK. The pin of a leaf stands for one key; the\n"
    "pin of an intermediate lets every certificate through that its authority ever issues. Before you take\n"
    "a pin from a server over the network, make sure that it is the right one: compare with its operator.\n"
    "\n"
    "exit status: 0 done, and with --check one of the pins is in a faultless list; 1 it is not, or the list\n"
    "has a fault; 2 something could not be read, or the command line is wrong\n";

/// The options of a command line, or a sentence about the first mistake in the line.
std::expected<Options, std::string> parse(const std::vector<std::string>& arguments) {
    Options options;
    bool optionsEnded = false;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        std::string* target = nullptr;
        if (optionsEnded || !argument->starts_with('-')) {
            options.sources.push_back(*argument);
        } else if (*argument == "--") {
            optionsEnded = true;
        } else if (*argument == "--help" || *argument == "-h") {
            options.help = true;
        } else if (*argument == "--write") {
            target = &options.write;
        } else if (*argument == "--check") {
            target = &options.check;
        } else if (*argument == "--only") {
            target = &options.only;
        } else {
            return std::unexpected{"unknown option \"" + *argument + "\""};
        }
        if (target != nullptr) {
            const auto& name = *argument;
            ++argument;
            if (argument == arguments.end() || argument->empty()) {
                return std::unexpected{name + " needs " + (name == "--only" ? "leaf or intermediate" : "a FILE.plist")};
            }
            *target = *argument;
        }
    }
    if (options.help) {
        return options;
    }
    if (!options.only.empty() && options.only != "leaf" && options.only != "intermediate") {
        return std::unexpected{"--only takes leaf or intermediate, not \"" + options.only + "\""};
    }
    if (options.sources.empty() && (options.check.empty() || !options.write.empty())) {
        return std::unexpected{std::string{"name a file or a server to take pins from"}};
    }
    return options;
}

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
ExitStatus collect(const Options& options, std::vector<std::string>& found) {
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
            return complain(list.error() + "; move it away to have a new list made");
        }
        if (!list->pins.empty() || !list->isArrayOfText) {
            complainOf(file, list->faults);
        }
        if (!list->isArrayOfText) {
            return complain(file + " is not a list of pins; move it away to have a new list made");
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

} // namespace

int main(int argc, char** argv) {
    const auto options = parse({argv + 1, argv + argc});
    if (!options) {
        return complain(options.error() + "; see kivo-pins --help");
    }
    if (options->help) {
        say(usage);
        return done;
    }
    return run(*options);
}
