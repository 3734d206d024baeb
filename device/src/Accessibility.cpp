#include "Controls.hpp"

#include <QAccessible>
#include <QAccessibleWidget>

namespace kivo::device {
namespace {

QAccessible::Role roleOf(platform::AccessibilityRole role) {
    switch (role) {
    case platform::AccessibilityRole::image:
        return QAccessible::Graphic;
    case platform::AccessibilityRole::progress:
        return QAccessible::Animation;
    case platform::AccessibilityRole::alert:
        return QAccessible::AlertMessage;
    default:
        return QAccessible::StaticText;
    }
}

QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
    auto* const element = dynamic_cast<ReadableElement*>(object);
    return element == nullptr ? nullptr : new QAccessibleWidget{element, roleOf(element->role())};
}

} // namespace

void makeElementsAccessible() {
    [[maybe_unused]] static const bool once = [] {
        QAccessible::installFactory(makeInterface);
        return true;
    }();
}

} // namespace kivo::device
