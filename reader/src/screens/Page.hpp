#pragma once

#include "screens/Look.hpp"

#include <kivo/platform/ui/ActivityIndicatorView.hpp>
#include <kivo/platform/ui/Button.hpp>
#include <kivo/platform/ui/ImageView.hpp>
#include <kivo/platform/ui/Label.hpp>
#include <kivo/platform/ui/StackView.hpp>
#include <kivo/platform/ui/TextField.hpp>

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace kivo::reader {

/// One page of the reader's screen: a picture, title and message, the content, and the buttons at the lower edge. The
/// identifiers of the views begin with the page's name.
class Page {
public:
    using Column = std::shared_ptr<platform::StackView>;

    /// A page with a title and, unless it is empty, a message: "aim" gives "aimTitle" and "aimMessage".
    Page(Look look, std::string name, ScreenText title, ScreenText message);

    /// Shows the picture of that name above the title.
    void setIllustration(std::string_view image);

    /// Adds a line of text in the page's look.
    std::shared_ptr<platform::Label> addText(std::string_view identifier, ScreenText text);

    /// Adds a field below the label that names it.
    std::shared_ptr<platform::TextField> addField(std::string_view identifier, ScreenText label);

    /// Adds a frame for what belongs together, and returns the column inside.
    Column addCard();

    /// A text in the page's look that stands in no column yet, as a card's rows have it.
    std::shared_ptr<platform::Label> label(std::string_view identifier, std::string text) const;

    /// Adds a row: the symbol, which may be null, and the text, which takes the rest of the width.
    std::shared_ptr<platform::StackView> addRow(const Column& card, const std::shared_ptr<platform::View>& symbol,
                                                const std::shared_ptr<platform::Label>& text) const;

    /// An icon of the height of a line, in that colour; null where the icon is not installed.
    std::shared_ptr<platform::ImageView> icon(std::string_view image, const platform::Color& color) const;

    /// The number of a step.
    std::shared_ptr<platform::View> number(int number) const;

    /// Adds a card with an icon and an arrow, which is tapped like a button.
    void addChoice(std::string_view identifier, std::string_view image, ScreenText title, std::function<void()> action);

    /// What a button is for: the way on, of which a page has one, or another way.
    enum class Way { on, other };

    /// Adds a button at the lower edge.
    void addButton(std::string_view identifier, ScreenText title, Way way, std::function<void()> action);

    /// Adds a turning wheel, whose text for screen readers is the page's title.
    std::shared_ptr<platform::View> addWheel();

    /// Adds a view to the content.
    void add(const std::shared_ptr<platform::View>& view);

    void setTitle(ScreenText text);

    void setMessage(ScreenText text) { message_->setText(look_.text(text)); }

    const Look& look() const { return look_; }

    const std::string& name() const { return name_; }

    /// The page's views.
    const Column& column() const { return column_; }

private:
    Look look_;
    std::string name_;
    Column column_ = std::make_shared<platform::StackView>();
    Column content_ = std::make_shared<platform::StackView>();
    Column buttons_ = std::make_shared<platform::StackView>();
    std::shared_ptr<platform::ImageView> illustration_ = std::make_shared<platform::ImageView>();
    std::shared_ptr<platform::Label> title_;
    std::shared_ptr<platform::Label> message_;
    std::shared_ptr<platform::View> wheel_;
};

} // namespace kivo::reader
