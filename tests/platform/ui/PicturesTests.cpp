#include "support/ScreenFixture.hpp"

#include <kivo/platform/ui/ImageView.hpp>
#include <kivo/platform/ui/NavigationController.hpp>
#include <kivo/platform/ui/ScrollView.hpp>
#include <kivo/platform/ui/StackView.hpp>

#include <gtest/gtest.h>

#include <memory>

namespace kivo::platform {
namespace {

/// A page that scrolls: a picture of 280 x 220 points, a text of variable height, and at the lower edge a button of 50
/// points, 10 apart.
class Pictures : public test::ScreenFixture {
protected:
    Pictures() {
        window_->setSafeArea({});
        window_->setRootViewController(screen_);
        scroll_->setPlacement({.top = 0, .left = 0, .bottom = 0, .right = 0});
        column_->setPlacement({.top = 0, .bottom = 0, .leading = 20, .trailing = 20, .maximumWidth = 440});
        const auto drawing = std::make_shared<Image>();
        drawing->size = {280, 220};
        picture_->setImage(drawing);
        picture_->setPlacement({.shareOfDisplay = 1});
        block_->setSpacing(4);
        button_->setPlacement({.height = 50});
        column_->setSpacing(10);
        rest_->setPlacement({.grows = true});
        for (const auto& each : std::initializer_list<std::shared_ptr<View>>{block_, text_, rest_, button_}) {
            column_->addSubview(each);
        }
        column_->insertSubview(picture_, 0);
        block_->setHidden(true);
        scroll_->addSubview(column_);
        screen_->view()->addSubview(scroll_);
    }

    void show(Size display, double textHeight) {
        text_->setPlacement({.height = textHeight});
        window_->setSize(display);
        window_->layoutIfNeeded();
    }

    std::shared_ptr<ViewController> screen_ = std::make_shared<ViewController>();
    std::shared_ptr<ScrollView> scroll_ = std::make_shared<ScrollView>();
    std::shared_ptr<StackView> column_ = std::make_shared<StackView>();
    std::shared_ptr<ImageView> picture_ = std::make_shared<ImageView>();
    std::shared_ptr<StackView> block_ = std::make_shared<StackView>();
    std::shared_ptr<View> text_ = std::make_shared<View>();
    std::shared_ptr<View> rest_ = std::make_shared<View>();
    std::shared_ptr<View> button_ = std::make_shared<View>();
};

TEST_F(Pictures, ShrinkAndGoBeforeAnythingMustBeScrolled) {
    const struct {
        double text;
        /// 0 for a picture that is gone.
        double picture;
        double button;
        double content;
    } rows[] = {
        {300, 220, 750, 800}, {501, 219, 750, 800}, {656, 64, 750, 800},  {657, 0, 750, 800},
        {730, 0, 750, 800},   {750, 0, 770, 820},   {590, 130, 750, 800},
    };

    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        show({390, 800}, row.text);
        EXPECT_EQ(picture_->isHidden(), row.picture == 0);
        EXPECT_EQ(picture_->isVisible(), row.picture > 0);
        EXPECT_EQ(row.picture > 0 ? picture_->frame().size.height : 0, row.picture);
        EXPECT_EQ(text_->frame().top(), row.picture > 0 ? row.picture + 10 : 0);
        EXPECT_EQ(button_->frame().top(), row.button);
        EXPECT_EQ(scroll_->contentSize().height, row.content);
    }
    picture_->setHidden(true);
    show({390, 800}, 300);
    EXPECT_EQ(text_->frame().top(), 0);
    picture_->setHidden(false);
    window_->layoutIfNeeded();
    EXPECT_EQ(text_->frame().top(), 230);
}

TEST_F(Pictures, TellTheirChangesOnly) {
    struct Watcher : WindowObserver {
        void viewDidChange(View& view) override { changes += view.identifier() == "picture" ? 1 : 0; }

        int changes = 0;
    };

    picture_->setIdentifier("picture");
    show({390, 800}, 600);
    const auto watcher = std::make_shared<Watcher>();
    window_->setObserver(watcher);
    text_->setNeedsLayout();
    window_->layoutIfNeeded();
    EXPECT_EQ(watcher->changes, 0);
    show({390, 800}, 700);
    EXPECT_GT(watcher->changes, 0);
}

TEST_F(Pictures, ShareTheRoom) {
    const auto other = std::make_shared<ImageView>();
    other->setImage(picture_->image());
    other->setPlacement({.shareOfDisplay = 1});
    block_->addSubview(other);
    block_->setHidden(false);
    show({390, 800}, 500);
    EXPECT_EQ(picture_->frame().size.height, 105);
    EXPECT_EQ(other->frame().size.height, 105);
    EXPECT_EQ(scroll_->contentSize().height, 800);
}

TEST_F(Pictures, StandBesideAColumnOnAWideDisplay) {
    const auto content = [this] { return picture_->frameOnScreen(); };

    const struct {
        const char* what;
        Size display;
        LayoutDirection direction;
        Rect picture;
        Rect column;
    } rows[] = {
        {"wide", {840, 360}, LayoutDirection::leftToRight, {{40, 70}, {280, 220}}, {{360, 0}, {440, 360}}},
        {"mirrored", {840, 360}, LayoutDirection::rightToLeft, {{520, 70}, {280, 220}}, {{40, 0}, {440, 360}}},
        {"less wide", {660, 360}, LayoutDirection::leftToRight, {{20, 125}, {140, 110}}, {{200, 0}, {440, 360}}},
    };

    for (const auto& row : rows) {
        for (const bool isInner : {false, true}) {
            SCOPED_TRACE(row.what);
            if (isInner) {
                block_->setHidden(false);
                picture_->removeFromSuperview();
                block_->addSubview(picture_);
            } else {
                block_->setHidden(true);
                picture_->removeFromSuperview();
                column_->insertSubview(picture_, 0);
            }
            window_->setLayoutDirection(row.direction);
            show(row.display, 280);
            EXPECT_TRUE(picture_->isVisible());
            EXPECT_EQ(content(), row.picture);
            EXPECT_EQ(column_->frame(), row.column);
            EXPECT_EQ(text_->frame().top(), isInner ? 10 : 0);
        }
    }
    show({840, 360}, 500);
    scroll_->setContentOffset(30);
    EXPECT_EQ(content().top(), 40);
    show({560, 360}, 280);
    EXPECT_TRUE(picture_->isHidden()) << "too narrow for both";
    EXPECT_EQ(column_->frame().left(), 60);
    show({840, 700}, 280);
    EXPECT_EQ(content(), (Rect{{200, 0}, {440, 220}})) << "room above";
    auto unbounded = column_->placement();
    unbounded.maximumWidth.reset();
    column_->setPlacement(unbounded);
    show({840, 360}, 280);
    EXPECT_TRUE(picture_->isHidden()) << "the column takes the whole width";
}

TEST_F(Pictures, StandBesideWhereTheirShareOfALowDisplayIsSmall) {
    picture_->setPlacement({.shareOfDisplay = 0.4});
    show({840, 360}, 100);
    EXPECT_EQ(picture_->frameOnScreen(), (Rect{{40, 70}, {280, 220}}));
    show({560, 360}, 100);
    EXPECT_EQ(picture_->frame().size.height, 24) << "too narrow for both, but the page fits";
}

} // namespace
} // namespace kivo::platform
