#include "FaultNumbers.hpp"

#include <kivo/simulator/FaultText.hpp>
#include <kivo/simulator/IdentityService.hpp>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

namespace kivo::simulator {
namespace {

using namespace std::chrono_literals;

constexpr std::uint64_t mostBytes = std::uint64_t{1024} * 1024 * 1024;

std::string textOf(std::chrono::milliseconds time) {
    return time % 1s == 0ms ? std::to_string(time / 1s) + "s" : std::to_string(time.count()) + "ms";
}

/// A kind of fault that is written with a value behind a colon.
struct Written {
    std::string_view kind;
    Fault::Kind fault;
    /// An example of the value, for those who wrote another one.
    std::string_view example;
    std::optional<Fault> (*read)(std::string_view value);
    std::string (*write)(const Fault& fault);
};

template <Fault (*make)(std::chrono::milliseconds)>
std::optional<Fault> readTime(std::string_view value) {
    const auto time = timeFrom(value);
    return time ? std::optional{make(*time)} : std::nullopt;
}

template <Fault (*make)(std::size_t)>
std::optional<Fault> readBytes(std::string_view value) {
    const auto bytes = numberFrom(value, mostBytes);
    return bytes && *bytes > 0 ? std::optional{make(*bytes)} : std::nullopt;
}

std::optional<Fault> readStatus(std::string_view value) {
    const auto status = numberFrom(value, 599);
    return status && *status >= 200 ? std::optional{Fault::status(static_cast<int>(*status))} : std::nullopt;
}

bool isPrintable(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, [](char each) { return each > ' ' && each <= '~'; });
}

std::optional<Fault> readRefusal(std::string_view value) {
    return isPrintable(value) ? std::optional{Fault::refuse(std::string{value})} : std::nullopt;
}

std::optional<Fault> readRedirect(std::string_view value) {
    return isPrintable(value) ? std::optional{Fault::redirect(std::string{value})} : std::nullopt;
}

std::optional<Fault> readAnswer(std::string_view value) {
    return Fault::answer(std::string{value});
}

std::string timeOf(const Fault& fault) {
    return textOf(fault.time());
}

std::string bytesOf(const Fault& fault) {
    return std::to_string(fault.bytes());
}

std::string statusOf(const Fault& fault) {
    return std::to_string(fault.httpStatus());
}

std::string valueOf(const Fault& fault) {
    return fault.text();
}

constexpr std::array written{
    Written{"delay", Fault::Kind::delay, "2s or 250ms", readTime<Fault::delay>, timeOf},
    Written{"slow-body", Fault::Kind::slowBody, "2s or 250ms", readTime<Fault::slowBody>, timeOf},
    Written{"slow-reader", Fault::Kind::slowReader, "65536", readBytes<Fault::slowReader>, bytesOf},
    Written{"huge", Fault::Kind::largeBody, "2000000", readBytes<Fault::largeBody>, bytesOf},
    Written{"status", Fault::Kind::status, "503", readStatus, statusOf},
    Written{"redirect", Fault::Kind::redirect, "https://host/page", readRedirect, valueOf},
    Written{"refuse", Fault::Kind::refuse, "STATUS_AUTH_FAILED", readRefusal, valueOf},
    Written{"answer", Fault::Kind::answer, "{}", readAnswer, valueOf},
};

constexpr std::string_view anotherScan = "another-scan";

} // namespace

std::expected<Fault, std::string> faultFromText(std::string_view text) {
    const auto& named = namedFaults();
    if (const auto found = std::ranges::find(named, text, &NamedFault::name); found != named.end()) {
        return found->fault;
    }
    if (text == anotherScan) {
        return Fault::anotherScan();
    }
    const auto colon = text.find(':');
    const auto* const kind = std::ranges::find(written, text.substr(0, colon), &Written::kind);
    if (colon == std::string_view::npos || kind == written.end()) {
        return std::unexpected{"takes a fault such as reset or delay:2s, not \"" + std::string{text} + "\""};
    }
    const auto value = text.substr(colon + 1);
    const auto fault = kind->read(value);
    if (!fault) {
        return std::unexpected{"takes \"" + std::string{kind->kind} + ":\" with a value such as " +
                               std::string{kind->example} + ", not \"" + std::string{value} + "\""};
    }
    return *fault;
}

std::string textOf(const Fault& fault) {
    const auto& named = namedFaults();
    if (const auto found = std::ranges::find(named, fault, &NamedFault::fault); found != named.end()) {
        return std::string{found->name};
    }
    const auto* const kind = std::ranges::find(written, fault.kind(), &Written::fault);
    return kind == written.end() ? std::string{anotherScan} : std::string{kind->kind} + ":" + kind->write(fault);
}

std::string faultChoices() {
    constexpr std::size_t column = 15;
    std::string text = "endpoints:";
    for (const auto endpoint : allEndpoints) {
        text.append(" ").append(name(endpoint));
    }
    text += "\nfaults:\n";
    for (const auto& each : namedFaults()) {
        text.append("  ").append(each.name).append(column - each.name.size(), ' ').append(each.meaning).append("\n");
    }
    return text;
}

} // namespace kivo::simulator
