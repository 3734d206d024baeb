#pragma once

#include "platform/sqlite/KeychainDatabase.hpp"

#include <kivo/platform/Keychain.hpp>

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kivo::platform {

/// The attributes that tell items apart. An item's value is sealed with them.
struct Identity {
    std::string itemClass;
    std::string service;
    std::string account;
    std::string accessGroup;

    bool operator==(const Identity&) const = default;

    std::string associatedData() const {
        constexpr std::size_t roomForLength = 24;
        std::string data;
        data.reserve(itemClass.size() + service.size() + account.size() + accessGroup.size() + 4 * roomForLength);
        for (const auto* part : {&itemClass, &service, &account, &accessGroup}) {
            data.append(std::to_string(part->size())).append(":").append(*part);
        }
        return data;
    }
};

inline Identity identityOf(const KeychainAttributes& attributes) {
    return {attributes.kSecClass, attributes.kSecAttrService.value_or(""), attributes.kSecAttrAccount.value_or(""),
            attributes.kSecAttrAccessGroup.value_or("")};
}

inline Identity identityOf(const SqliteStatement& row, int column) {
    const auto text = [&](int offset) { return std::string{row.bytes(column + offset)}; };
    return {text(0), text(1), text(2), text(3)};
}

/// The SQL condition for the items that match a query's attributes.
class Matching {
public:
    explicit Matching(const KeychainAttributes& query)
        : query_{query} {}

    /// A statement that begins as given and ends with the condition.
    std::string statement(std::string_view beginning, std::string_view end = {}) const {
        constexpr std::size_t roomForCondition = 128;
        std::string text;
        text.reserve(beginning.size() + roomForCondition + end.size());
        text.append(beginning).append(" WHERE class = ?");
        for (const auto& [column, value] : comparisons()) {
            if (*value) {
                text.append(" AND ").append(column).append(" = ?");
            }
        }
        return text.append(end);
    }

    void bind(SqliteStatement& statement) const {
        statement.bindText(query_.kSecClass);
        for (const auto& [column, value] : comparisons()) {
            if (*value) {
                statement.bindText(**value);
            }
        }
    }

private:
    using Comparison = std::pair<const char*, const std::optional<std::string>*>;

    std::array<Comparison, 5> comparisons() const {
        return {Comparison{"service", &query_.kSecAttrService}, Comparison{"account", &query_.kSecAttrAccount},
                Comparison{"access_group", &query_.kSecAttrAccessGroup}, Comparison{"generic", &query_.kSecAttrGeneric},
                Comparison{"accessible", &query_.kSecAttrAccessible}};
    }

    const KeychainAttributes& query_;
};

} // namespace kivo::platform
