#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace kivo::json {

/// The JSON text of an object that is only written: every member is written at once, and none is kept. The names must
/// differ.
class ObjectText {
public:
    /// `expected` is the number of bytes for which there is room from the start.
    explicit ObjectText(std::size_t expected = 256);

    ObjectText& add(std::string_view name, std::string_view text);
    ObjectText& add(std::string_view name, std::int64_t number);
    ObjectText& add(std::string_view name, ObjectText object);

    /// Adds a member for each name and text.
    template <class Texts>
    ObjectText& addAll(const Texts& texts) {
        for (const auto& [name, text] : texts) {
            add(name, std::string_view{text});
        }
        return *this;
    }

    /// The object as compact JSON; absent when a text in it is no UTF-8.
    std::optional<std::string> take() &&;

private:
    void begin(std::string_view name);

    std::string text_{"{"};
    bool isValid_ = true;
};

} // namespace kivo::json
