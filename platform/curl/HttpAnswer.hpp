#pragma once

#include "platform/base/Ascii.hpp"

#include <kivo/platform/UrlSession.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::platform {

/// Whether two names of headers are the same, in any case of their letters.
inline bool sameName(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, ascii::lower, ascii::lower);
}

/// A header's value without the white space around it.
inline std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    return first == text.npos ? std::string_view{} : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

/// The most bytes that an answer may have.
struct HttpLimits {
    /// For the head, the heads of interim answers before it, and the trailers together.
    std::size_t head = 0;
    std::size_t body = 0;
};

/// Collects an HTTP answer as it arrives, and judges whether the answer is whole.
///
/// An answer whose end is only the end of its connection is refused: a part of such an answer looks like the whole.
class HttpAnswer {
public:
    enum class Fault { none, malformed, noLength, headTooLarge, bodyTooLarge };

    HttpAnswer() = default;

    /// `toHead`: the request has asked for the head alone.
    HttpAnswer(HttpLimits limits, bool toHead)
        : limits_{limits}
        , toHead_{toHead} {}

    /// Takes a line of a head, the empty line at its end included, or of the trailers. False when the answer is faulty.
    bool takeLine(std::string_view line);

    /// Takes a part of the body. False when the answer is faulty.
    bool takeBody(std::string_view bytes);

    Fault fault() const { return fault_; }

    /// Whether the head is complete and the body has as many bytes as the head announced.
    bool isWhole() const;

    /// Whether the answer sends the request on to another address.
    bool isRedirect() const;

    int status() const { return status_; }

    /// Moves the answer out.
    UrlResponse release();

private:
    enum class Part { statusLine, head, body };

    bool isFaulty(Fault fault);
    void takeStatusLine(std::string_view line);
    void takeHeader(std::string_view line);
    Fault judgeLength();
    bool allowsBody() const;

    HttpLimits limits_;
    bool toHead_ = false;
    Part part_ = Part::statusLine;
    Fault fault_ = Fault::none;
    bool isHttp1_ = false;
    int status_ = 0;
    std::size_t headBytes_ = 0;
    std::vector<HttpHeader> headers_;
    /// Absent where the body is sent in chunks or frames.
    std::optional<std::uint64_t> length_;
    Data body_;
};

} // namespace kivo::platform
