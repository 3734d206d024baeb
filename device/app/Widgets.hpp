#pragma once

#include <QBoxLayout>
#include <QFormLayout>
#include <QString>
#include <memory>
#include <utility>

namespace kivo::device::app {

/// A new widget at the end of a layout, whose parent comes to own it.
template <class Widget, class... Arguments>
Widget& add(QBoxLayout& layout, Arguments&&... arguments) {
    auto widget = std::make_unique<Widget>(std::forward<Arguments>(arguments)...);
    auto& added = *widget;
    layout.addWidget(widget.release());
    return added;
}

/// The same in a row of a form; the label is also the widget's name for assistive technology.
template <class Widget, class... Arguments>
Widget& addRow(QFormLayout& layout, const QString& label, Arguments&&... arguments) {
    auto widget = std::make_unique<Widget>(std::forward<Arguments>(arguments)...);
    auto& added = *widget;
    added.setAccessibleName(label);
    layout.addRow(label, widget.release());
    return added;
}

} // namespace kivo::device::app
