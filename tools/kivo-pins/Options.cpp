#include "Options.hpp"

namespace pins {

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

std::string usage() {
    return "usage: kivo-pins [options] SOURCE...\n"
           "\n"
           "Prints the pins by which the Kivo SDK knows a server, and keeps the list that a host ships as\n"
           "readid_certificates.plist. A SOURCE is one of\n"
           "\n"
           "  a file                 certificates, a public or a private key, in PEM or DER form\n"
           "  HOST[:PORT]            a server (port 443); its chain is shown, not trusted\n"
           "\n"
           "  --only KIND            only the leaf, or only the intermediate\n"
           "  --write FILE.plist     add the pins to a list, which is made if need be\n"
           "  --check FILE.plist     tell whether one of the pins is in a list, and what is wrong with the list;\n"
           "                         without a SOURCE, look at the list alone\n"
           "  --help                 this text\n"
           "\n"
           "One pin of a server's chain in the list is enough for the SDK. The pin of a leaf stands for one key; the\n"
           "pin of an intermediate lets every certificate through that its authority ever issues. Before you take\n"
           "a pin from a server over the network, make sure that it is the right one: compare with its operator.\n"
           "\n"
           "exit status: 0 done, and with --check one of the pins is in a faultless list; 1 it is not, or the list\n"
           "has a fault; 2 something could not be read, or the command line is wrong\n";
}

} // namespace pins
