#pragma once

#include <kivo/Export.hpp>
#include <kivo/platform/ui/LayoutConstraint.hpp>
#include <kivo/platform/ui/View.hpp>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <typeinfo>

namespace kivo::platform {

/// A screen's side of the connections to its storyboard scene: it names its outlets and actions here.
///
/// An outlet that the scene lacks, or that is of another class, and an action of the scene that the screen lacks, make
/// the scene fail with an error that names them.
class KIVO_EXPORT Interface {
public:
    /// Called with the control that a person has used.
    using Action = std::function<void(const std::shared_ptr<View>& sender)>;

    virtual ~Interface() = default;

    /// Fills `slot` with the view of that outlet.
    template <class T>
    void outlet(std::string_view name, std::shared_ptr<T>& slot) {
        connectView(name, typeid(T), [&slot](const std::shared_ptr<View>& view) {
            slot = std::dynamic_pointer_cast<T>(view);
            return slot != nullptr;
        });
    }

    /// Fills `slot` with the constraint of that outlet.
    void outlet(std::string_view name, std::shared_ptr<LayoutConstraint>& slot) { connectConstraint(name, slot); }

    /// Fills `slot` like `outlet`, for an outlet that the scene may lack. Without the outlet, `slot` gets a view that
    /// is in no tree, or a constraint of no view, so that the screen needs no check.
    template <class T>
    void optionalOutlet(std::string_view name, std::shared_ptr<T>& slot) {
        if (hasOutlet(name)) {
            outlet(name, slot);
        } else {
            slot = std::make_shared<T>();
        }
    }

    /// Names a function that controls of the scene can call. It is not called after the screen's end, so capture `this`
    /// and never the screen's shared pointer.
    virtual void action(std::string_view name, Action action) = 0;

protected:
    /// What the storyboard's reader does for the functions above.
    virtual bool hasOutlet(std::string_view name) const = 0;
    virtual void connectView(std::string_view name, const std::type_info& wanted,
                             const std::function<bool(const std::shared_ptr<View>&)>& take) = 0;
    virtual void connectConstraint(std::string_view name, std::shared_ptr<LayoutConstraint>& slot) = 0;
};

} // namespace kivo::platform
