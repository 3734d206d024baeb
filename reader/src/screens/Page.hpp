#pragma once

#include "screens/Look.hpp"

#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/StackView.hpp>
#include <kivo/platform/ui/TextField.hpp>

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace kivo::reader {

/// One page of the reader's screen: views one below the other. The identifiers of the views begin with the page's name.
/// Every text is a key of the host's table.
class Page {
public:
    /// A page with a title and, unless it is empty, a message: "aim" gives "aimTitle" and "aimMessage".
    Page(Look look, std::string name, std::string_view title, std::string_view message);

    /// Adds a line of text in the page's look.
    std::shared_ptr<platform::Label> addText(std::string_view identifier, std::string_view key);
    /// The same with a text as it is, such as the name of a person.
    std::shared_ptr<platform::Label> addValue(std::string_view identifier, std::string text);

    /// Adds a field below the label that names it.
    std::shared_ptr<platform::TextField> addField(std::string_view identifier, std::string_view label);

    /// Adds a button. The first button of a page stands out.
    void addButton(std::string_view identifier, std::string_view title, std::function<void()> action);

    /// Adds a turning wheel, whose text for screen readers is the page's title.
    void addWheel();

    void add(const std::shared_ptr<platform::View>& view) { column_->addSubview(view); }

    void setTitle(std::string_view key) { title_->setText(look_.text(key)); }

    void setMessage(std::string_view key) { message_->setText(look_.text(key)); }

    const Look& look() const { return look_; }

    const std::string& name() const { return name_; }

    /// The page's views.
    const std::shared_ptr<platform::StackView>& column() const { return column_; }

private:
    Look look_;
    std::string name_;
    std::shared_ptr<platform::StackView> column_ = std::make_shared<platform::StackView>();
    std::shared_ptr<platform::Label> title_;
    std::shared_ptr<platform::Label> message_;
    bool hasButton_ = false;
};

} // namespace kivo::reader
