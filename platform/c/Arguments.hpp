#pragma once

#include "platform/c/Guarded.hpp"

#include <kivo/RawValue.hpp>
#include <kivo/c/base.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace kivo::c {

/// A pointer of the host, and what releases it; released once, with the object that owns it last.
class UserData {
public:
    UserData(void* pointer, kivo_release release) noexcept
        : pointer_{pointer}
        , release_{release} {}

    UserData(UserData&& other) noexcept
        : pointer_{other.pointer_}
        , release_{std::exchange(other.release_, nullptr)} {}

    UserData(const UserData&) = delete;
    UserData& operator=(const UserData&) = delete;
    UserData& operator=(UserData&&) = delete;

    ~UserData() {
        if (release_ != nullptr) {
            release_(pointer_);
        }
    }

    void* pointer() const { return pointer_; }

    /// The same for functions that are copied.
    std::shared_ptr<const UserData> shared() && { return std::make_shared<const UserData>(std::move(*this)); }

private:
    void* pointer_;
    kivo_release release_;
};

/// A text of the host. `what` names it in the sentence about a mistake.
std::string_view viewOf(kivo_text text, const char* what);

inline std::string stringOf(kivo_text text, const char* what) {
    return std::string{viewOf(text, what)};
}

/// `text` for the host, which must end with a zero byte, as literals and `std::string` do.
inline kivo_text textOf(std::string_view text) noexcept {
    return text.data() == nullptr ? kivo_text{"", 0} : kivo_text{text.data(), text.size()};
}

/// A string for the host to free.
kivo_string* handOver(std::string text);

/// Refuses a null pointer.
template <class Pointer>
Pointer notNull(Pointer pointer, const char* what) {
    if (pointer == nullptr) {
        throw Misuse{std::string{what} + " is null"};
    }
    return pointer;
}

/// Reads a structure of another release: missing members are zero, and members that this release does not know must be.
template <class Structure>
Structure structureOf(const Structure* given, const char* what) {
    constexpr std::size_t mostBytes = 4096;
    const auto size = notNull(given, what)->size;
    if (size <= sizeof size || size > mostBytes) {
        throw Misuse{std::string{what} + ": its member size is not its size in bytes"};
    }
    const auto* const bytes = reinterpret_cast<const char*>(given);
    if (size > sizeof(Structure) &&
        std::any_of(bytes + sizeof(Structure), bytes + size, [](char c) { return c != 0; })) {
        throw Misuse{std::string{what} + " sets members that this release does not have"};
    }
    Structure known{};
    std::memcpy(&known, given, std::min(size, sizeof known));
    return known;
}

/// The value of a C++ enumeration whose integer the host passed.
template <class E, class Passed>
E enumeratorOf(Passed passed, const char* what) {
    const auto value = fromRawValue<E>(static_cast<int>(passed));
    if (!value) {
        throw Misuse{std::string{what} + " has no value " + std::to_string(static_cast<int>(passed))};
    }
    return *value;
}

} // namespace kivo::c
