#include "platform/curl/HttpAnswer.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace kivo::platform {
namespace {

constexpr std::size_t usualHeaderCount = 8;

// The number in a text of digits. A number that does not fit counts as the largest number, which is too large.
std::optional<std::uint64_t> lengthIn(std::string_view text) {
    const bool isNumber = !text.empty() && std::ranges::all_of(text, ascii::isDigit);
    if (!isNumber) {
        return std::nullopt;
    }
    std::uint64_t length = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), length);
    return result.ec == std::errc{} ? length : UINT64_MAX;
}

} // namespace

bool HttpAnswer::takeLine(std::string_view line) {
    headBytes_ += line.size();
    if (headBytes_ > limits_.head) {
        return !isFaulty(Fault::headTooLarge);
    }
    while (line.ends_with('\n') || line.ends_with('\r')) {
        line.remove_suffix(1);
    }
    switch (part_) {
    case Part::statusLine:
        takeStatusLine(line);
        break;
    case Part::head:
        if (!line.empty()) {
            takeHeader(line);
        } else if (status_ >= 100 && status_ < 200) {
            part_ = Part::statusLine;
        } else {
            part_ = Part::body;
            return !isFaulty(judgeLength());
        }
        break;
    case Part::body:
        // Trailers are not used.
        break;
    }
    return true;
}

bool HttpAnswer::takeBody(std::string_view bytes) {
    if (bytes.size() > limits_.body - body_.size()) {
        return !isFaulty(Fault::bodyTooLarge);
    }
    if (body_.empty() && length_) {
        body_.reserve(static_cast<std::size_t>(std::min<std::uint64_t>(*length_, limits_.body)));
    }
    body_.append(bytes);
    return true;
}

bool HttpAnswer::isWhole() const {
    return part_ == Part::body && (!allowsBody() || !length_ || *length_ == body_.size());
}

bool HttpAnswer::isRedirect() const {
    constexpr std::array redirects{301, 302, 303, 307, 308};
    return std::ranges::find(redirects, status_) != redirects.end() &&
           std::ranges::any_of(headers_, [](const auto& header) { return sameName(header.first, "Location"); });
}

UrlResponse HttpAnswer::release() {
    UrlResponse response{.status = status_,
                         .headers = std::move(headers_),
                         .body = std::nullopt,
                         .isProvenWhole = isHttp1_ || length_ || !allowsBody()};
    if (status_ != 204 && status_ != 205 && status_ != 304) {
        response.body = std::move(body_);
    }
    return response;
}

bool HttpAnswer::isFaulty(Fault fault) {
    fault_ = fault;
    return fault != Fault::none;
}

void HttpAnswer::takeStatusLine(std::string_view line) {
    headers_.clear();
    headers_.reserve(usualHeaderCount);
    length_.reset();
    isHttp1_ = line.starts_with("HTTP/1");
    const auto code = line.substr(std::min(line.find(' ') + 1, line.size())).substr(0, 3);
    status_ = 0;
    std::from_chars(code.data(), code.data() + code.size(), status_);
    part_ = Part::head;
}

void HttpAnswer::takeHeader(std::string_view line) {
    const auto colon = line.find(':');
    if ((line.front() == ' ' || line.front() == '\t') && !headers_.empty()) {
        headers_.back().second.append(" ").append(trimmed(line));
    } else if (colon != line.npos) {
        headers_.emplace_back(trimmed(line.substr(0, colon)), trimmed(line.substr(colon + 1)));
    }
}

HttpAnswer::Fault HttpAnswer::judgeLength() {
    bool isChunked = false;
    for (const auto& [name, value] : headers_) {
        if (sameName(name, "Content-Length")) {
            const auto length = lengthIn(value);
            if (!length || (length_ && *length_ != *length)) {
                return Fault::malformed;
            }
            length_ = length;
        } else if (sameName(name, "Transfer-Encoding")) {
            if (!sameName(value, "chunked")) {
                return Fault::malformed;
            }
            isChunked = true;
        }
    }
    if (isChunked) {
        length_.reset();
    }
    if (!allowsBody()) {
        return Fault::none;
    }
    if (length_ && *length_ > limits_.body) {
        return Fault::bodyTooLarge;
    }
    // The body of a redirect is not used, so its end does not matter.
    return isHttp1_ && !isChunked && !length_ && !isRedirect() ? Fault::noLength : Fault::none;
}

bool HttpAnswer::allowsBody() const {
    return !toHead_ && status_ != 204 && status_ != 205 && status_ != 304;
}

} // namespace kivo::platform
