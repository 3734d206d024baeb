#pragma once

#include <kivo/platform/ui/View.hpp>

#include <memory>
#include <vector>

namespace kivo::platform {

/// Places its visible subviews one after the other, a row in the direction of the person's language. Of their own
/// placement only the sizes and `grows` count.
class KIVO_EXPORT StackView : public View {
public:
    /// The direction in which the subviews follow one another.
    enum class Axis { horizontal, vertical };
    /// Across the axis.
    enum class Alignment { fill, leading, center, trailing };
    /// Along the axis. `fill`: each subview gets the length that it needs, and the growing subviews, or else the last
    /// subview without a fixed length, take the rest. `fillEqually`: all subviews get the same length.
    enum class Distribution { fill, fillEqually };

    /// The direction; vertical at first.
    Axis axis() const { return axis_; }

    void setAxis(Axis axis);

    /// The distance between two subviews; 0 at first.
    double spacing() const { return spacing_; }

    void setSpacing(double spacing);

    /// The place of a subview across the axis; `fill` at first.
    Alignment alignment() const { return alignment_; }

    void setAlignment(Alignment alignment);

    /// The lengths of the subviews along the axis; `fill` at first.
    Distribution distribution() const { return distribution_; }

    void setDistribution(Distribution distribution);

    /// The distance of the subviews from this view's edges; 0 at first.
    const EdgeInsets& margins() const { return margins_; }

    void setMargins(const EdgeInsets& margins);

    Size sizeThatFits(double widthLimit) override;

protected:
    void layoutSubviews() override;

private:
    using Views = std::vector<std::shared_ptr<View>>;

    /// The visible subviews that follow one another. A picture beside the column is none of them.
    Views inLine() const;
    std::vector<double> widthsInRow(const Views& views, double available) const;
    static std::vector<double> heightsInColumn(const Views& views, double width);
    void placeBeside();
    void shareRest(const Views& views, std::vector<double>& lengths, double available) const;
    double lengthAcross(const View& view, double needed, double available) const;
    double offsetAcross(double length, double available) const;

    Axis axis_ = Axis::vertical;
    double spacing_ = 0;
    Alignment alignment_ = Alignment::fill;
    Distribution distribution_ = Distribution::fill;
    EdgeInsets margins_;
};

} // namespace kivo::platform
