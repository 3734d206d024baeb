#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace program {

/// The options of a program: how they are read, refused and explained, the same in all programs.
///
/// An option with a value is given as `--name VALUE` or `--name=VALUE`. A value that begins with a dash is refused, so
/// that a forgotten value does not swallow the next option. `--help` is an option of every program.
class CommandLine {
public:
    /// Takes a value. Returns an empty text, or the reason for the refusal: the end of a sentence that begins with the
    /// option's name.
    using Take = std::function<std::string(const std::string& value)>;

    enum class Times { once, any };

    /// An exit status, and when the program ends with that status.
    struct Status {
        int code;
        std::string meaning;
    };

    struct About {
        std::string name;
        /// The arguments as the help shows them, such as "[options] FILE...".
        std::string arguments;
        /// What the program does; the beginning of the help.
        std::string purpose;
        /// Status 2 stands for a wrong command line, in every program.
        std::vector<Status> statuses;
    };

    explicit CommandLine(About about);
    ~CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    void flag(const std::string& name, bool& isSet, const std::string& meaning);
    /// `placeholder` stands for the value in the help, such as "FILE".
    void value(const std::string& name, const std::string& placeholder, const std::string& meaning, Take take,
               Times times = Times::once);
    /// Takes the arguments that belong to no option. Without this call such arguments are refused.
    void arguments(Take take);

    /// Adds text to the end of the help, before the exit statuses.
    void explain(const std::string& text) { explanation_ += text; }

    /// Reads the arguments. Returns nothing when the program may go on, or the status to end with: the help was
    /// printed, or a mistake was told.
    std::optional<int> read(int argc, const char* const* argv);

    /// Tells a mistake in the command line. Returns the status to end with.
    int refuse(const std::string& mistake) const;

private:
    class Parser;

    std::string help() const;

    About about_;
    std::string explanation_;
    std::unique_ptr<Parser> parser_;
};

/// The names in words, such as "14, 15 or all".
std::string listed(const std::vector<std::string>& names);

/// A value that is one of `names`.
CommandLine::Take oneOf(std::vector<std::string> names, std::string& chosen);

} // namespace program
