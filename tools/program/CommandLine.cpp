#include "program/CommandLine.hpp"

#include "program/Program.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <deque>
#include <utility>

namespace program {
namespace {

constexpr int wrongCommandLine = 2;

struct Option {
    std::string name;
    std::string placeholder;
    std::string meaning;
    CommandLine::Take take;
    CommandLine::Times times = CommandLine::Times::once;
    std::vector<std::string> values{};
};

std::string needsValue(const Option& option) {
    return option.name + " needs a value: " + option.name + " " + option.placeholder;
}

/// The reason why the option's values are refused; empty for good values.
std::string problemOf(const Option& option) {
    if (option.times == CommandLine::Times::once && option.values.size() > 1) {
        return option.name + " is given twice";
    }
    for (const auto& value : option.values) {
        if (value.empty() || (value.starts_with('-') && value != "-")) {
            return needsValue(option);
        }
        if (const auto problem = option.take(value); !problem.empty()) {
            return option.name + " " + problem;
        }
    }
    return "";
}

} // namespace

class CommandLine::Parser {
public:
    Parser() {
        app.set_help_flag();
        app.add_flag("-h,--help", isHelpWanted)->disable_flag_override();
    }

    /// Returns the first mistake, or an empty text.
    std::string read(int argc, const char* const* argv) {
        try {
            app.parse(argc, argv);
        } catch (const CLI::ExtrasError&) {
            const auto first = app.remaining().front();
            return (first.starts_with('-') ? "unknown option \"" : "unexpected argument \"") + first + "\"";
        } catch (const CLI::ArgumentMismatch& mismatch) {
            const std::string text = mismatch.what();
            const auto name = text.substr(0, text.find_first_of(": "));
            const auto option = std::ranges::find(options, name, &Option::name);
            return option == options.end() ? "--" + name + " takes no value" : needsValue(*option);
        } catch (const CLI::ParseError& error) {
            return error.what();
        }
        return "";
    }

    std::string takeValues() const {
        for (const auto& option : options) {
            if (auto problem = problemOf(option); !problem.empty()) {
                return problem;
            }
        }
        for (const auto& argument : rest) {
            if (auto problem = takeRest(argument); !problem.empty()) {
                return problem;
            }
        }
        return "";
    }

    CLI::App app;
    bool isHelpWanted = false;
    /// A deque, because the parser keeps references to the values.
    std::deque<Option> options;
    std::vector<std::pair<std::string, std::string>> rows;
    std::vector<std::string> rest;
    Take takeRest;
};

CommandLine::CommandLine(About about)
    : about_{std::move(about)}
    , parser_{std::make_unique<Parser>()} {}

CommandLine::~CommandLine() = default;

void CommandLine::flag(const std::string& name, bool& isSet, const std::string& meaning) {
    parser_->app.add_flag(name, isSet)->disable_flag_override();
    parser_->rows.emplace_back(name, meaning);
}

void CommandLine::value(const std::string& name, const std::string& placeholder, const std::string& meaning, Take take,
                        Times times) {
    auto& option = parser_->options.emplace_back(
        Option{.name = name, .placeholder = placeholder, .meaning = meaning, .take = std::move(take), .times = times});
    parser_->app.add_option(name, option.values)->allow_extra_args(false);
    parser_->rows.emplace_back(name + " " + placeholder, meaning);
}

void CommandLine::arguments(Take take) {
    parser_->app.add_option("arguments", parser_->rest);
    parser_->takeRest = std::move(take);
}

std::optional<int> CommandLine::read(int argc, const char* const* argv) {
    const auto mistake = parser_->read(argc, argv);
    if (parser_->isHelpWanted) {
        std::fputs(help().c_str(), stdout);
        return 0;
    }
    const auto problem = mistake.empty() ? parser_->takeValues() : mistake;
    return problem.empty() ? std::nullopt : std::optional{refuse(problem)};
}

int CommandLine::refuse(const std::string& mistake) const {
    complain(mistake + "; " + about_.name + " --help tells more");
    return wrongCommandLine;
}

std::string CommandLine::help() const {
    auto rows = parser_->rows;
    rows.emplace_back("-h, --help", "this text");
    const auto longest = std::ranges::max(rows, {}, [](const auto& row) { return row.first.size(); }).first.size();
    auto text = "usage: " + about_.name + " " + about_.arguments + "\n\n" + about_.purpose + "\noptions:\n";
    for (const auto& [name, meaning] : rows) {
        text.append("  ").append(name).append(longest - name.size() + 2, ' ');
        for (const char each : meaning) {
            text += each;
            if (each == '\n') {
                text.append(longest + 4, ' ');
            }
        }
        text += '\n';
    }
    text += (explanation_.empty() ? "" : "\n") + explanation_ + "\nexit status:\n";
    for (const auto& [code, meaning] : about_.statuses) {
        text += "  " + std::to_string(code) + "  " + meaning + "\n";
    }
    return text;
}

std::string listed(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const auto* const separator = i + 1 == names.size() ? " or " : ", ";
        text += (i == 0 ? "" : separator) + names[i];
    }
    return text;
}

CommandLine::Take oneOf(std::vector<std::string> names, std::string& chosen) {
    return [names = std::move(names), &chosen](const std::string& value) -> std::string {
        chosen = value;
        return std::ranges::find(names, value) != names.end() ? ""
                                                              : "takes " + listed(names) + ", not \"" + value + "\"";
    };
}

} // namespace program
