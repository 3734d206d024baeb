#pragma once

#include <nlohmann/json.hpp>

#include <initializer_list>
#include <string>
#include <string_view>

namespace kivo::simulator {

/// What is wrong with a request.
struct Violation {
    std::string text;
    /// What it is answered with.
    int httpStatus = 200;
};

/// Makes sure that `object` has exactly these members, all of them text. Throws a `Violation`, like what follows.
void requireTexts(const nlohmann::ordered_json& object, const std::string& where,
                  std::initializer_list<const char*> members);

nlohmann::ordered_json parsed(std::string_view body);

} // namespace kivo::simulator
