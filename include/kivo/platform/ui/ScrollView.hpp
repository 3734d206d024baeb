#pragma once

#include <kivo/platform/ui/View.hpp>

#include <memory>
#include <optional>
#include <vector>

namespace kivo::platform {

/// Shows a part of its content, which may be higher than the view.
///
/// Pictures (`Placement::shareOfDisplay`) make room before anything must be scrolled: where the content is higher than
/// the view, they shrink. A picture with less than 64 points stands beside the column that holds the picture, if the
/// column has a `maximumWidth` and leaves enough of the width; else the picture goes.
class KIVO_EXPORT ScrollView : public View {
public:
    /// The size of what can be scrolled, known after the layout.
    Size contentSize() const { return contentSize_; }

    /// How far the content is scrolled up.
    double contentOffset() const { return contentOffset_; }

    void setContentOffset(double offset);

    /// Scrolls as little as needed to show `view`, which must be in the tree below this view.
    void scrollTo(const View& view);

protected:
    void layoutSubviews() override;

private:
    using Views = std::vector<std::shared_ptr<View>>;

    void makeRoom(const Views& pictures);
    void addPictures(const View& around, Views& found) const;
    void setRoom(View& picture, std::optional<double> height, const std::optional<Rect>& beside = {});
    bool standBeside(View& picture);

    Size contentSize_;
    double contentOffset_ = 0;
    /// The column that has a picture beside, and how far the column stands aside for the picture.
    const View* columnAside_ = nullptr;
    double aside_ = 0;
};

} // namespace kivo::platform
