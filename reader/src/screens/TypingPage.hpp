#pragma once

#include "screens/Page.hpp"
#include "screens/TypedKey.hpp"

#include <functional>
#include <memory>

namespace kivo::reader {

/// The page on which a person types what opens the chip. Main thread.
class TypingPage : public std::enable_shared_from_this<TypingPage> {
public:
    struct Events {
        /// Called with each key that the person has typed without a fault.
        std::function<void(const AccessKey&)> typed;
        /// Called when the person types, so that nobody takes the person for gone.
        std::function<void()> touched;
        /// The person wishes to use the camera; empty where there is none.
        std::function<void()> aim;
    };

    /// `remark` says why the person types, and may be empty. `offersAccessNumber` shows a field for the number on the
    /// face of a card.
    static std::shared_ptr<TypingPage> make(const Look& look, ScreenText remark, bool offersAccessNumber,
                                            Events events);

    TypingPage(const Look& look, ScreenText remark, Events events);

    const Page& page() const { return page_; }

private:
    void addFields(bool offersAccessNumber);
    void submit();
    /// Shows what is wrong below the field; null for nothing wrong.
    void showFault(const std::shared_ptr<platform::TextField>& field, ScreenText sentence);

    Page page_;
    Events events_;
    std::shared_ptr<platform::TextField> number_;
    std::shared_ptr<platform::TextField> birth_;
    std::shared_ptr<platform::TextField> expiry_;
    std::shared_ptr<platform::TextField> accessNumber_;
    std::shared_ptr<platform::Label> fault_;
};

} // namespace kivo::reader
