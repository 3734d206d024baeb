#pragma once

#include <kivo/platform/UrlSession.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kivo::platform {

/// The most bytes that an answer may have.
struct HttpLimits {
    /// Head, the heads of interim answers before it, and trailers together.
    std::size_t head = 0;
    std::size_t body = 0;
};

/// An HTTP answer as it arrives, and whether it is whole.
///
/// An answer that ends where its connection ends is refused: a part of such an answer looks like the whole.
class HttpAnswer {
public:
    enum class Fault { none, malformed, noLength, headTooLarge, bodyTooLarge };

    HttpAnswer() = default;

    /// `toHead`: the request asked for no body.
    HttpAnswer(HttpLimits limits, bool toHead)
        : limits_{limits}
        , toHead_{toHead} {}

    /// Takes a line of a head, the empty one at its end included, or of the trailers. False when the answer is faulty.
    bool takeLine(std::string_view line);

    /// Takes a part of the body. False when the answer is faulty.
    bool takeBody(std::string_view bytes);

    Fault fault() const { return fault_; }

    /// Whether the head came to its end and the body has as many bytes as the head announced.
    bool isWhole() const;

    /// Whether the answer sends the request on to another address.
    bool isRedirect() const;

    int status() const { return status_; }

    /// Gives the answer away.
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
