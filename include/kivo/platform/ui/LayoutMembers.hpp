#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/Color.hpp>
#include <kivo/platform/ui/Font.hpp>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kivo::platform {

/// A view's side of its description in a storyboard: the view names the members that it has in addition to the members
/// of its base class, each with a function that takes the value. A value of the wrong type or out of bounds is an error
/// of the storyboard.
class KIVO_EXPORT LayoutMembers {
public:
    virtual ~LayoutMembers() = default;

    /// A member of that type, whose number lies between `least` and `most`. `set` is called when the layout has the
    /// member.
    virtual void flag(std::string_view name, const std::function<void(bool)>& set) = 0;
    virtual void integer(std::string_view name, int least, int most, const std::function<void(int)>& set) = 0;
    virtual void number(std::string_view name, double least, double most, const std::function<void(double)>& set) = 0;
    /// A text, which may come from the bundle's string table.
    virtual void text(std::string_view name, const std::function<void(std::string)>& set) = 0;
    /// A colour that the asset catalogue lacks sets nothing.
    virtual void color(std::string_view name, const std::function<void(Color)>& set) = 0;
    /// A font by name and size.
    virtual void font(std::string_view name, const std::function<void(Font)>& set) = 0;
    /// One of `words`; `set` receives the word's index.
    virtual void choice(std::string_view name, const std::vector<std::string_view>& words,
                        const std::function<void(std::size_t)>& set) = 0;

    /// A function that puts a member's value into `slot`, which must live as long as the view.
    template <class T>
    static auto into(T& slot) {
        return [&slot](auto value) { slot = std::move(value); };
    }
};

/// A second base class, beside `View`, of views with members of their own in storyboards. Register such a class with
/// `Storyboard::registerView`.
class KIVO_EXPORT DescribedInLayouts {
public:
    virtual ~DescribedInLayouts() = default;

    /// Names the view's own members. Called while the view is made from a storyboard, more than once.
    virtual void describe(LayoutMembers& members) = 0;
};

} // namespace kivo::platform
