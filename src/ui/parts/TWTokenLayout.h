#pragma once

#include <QRect>

#include <vector>

// Places boxes of equal height in lines from left to right, as many per line as fit. Works without a widget.
class TWTokenLayout final {
public:
    struct Metrics {
        int lineWidth = 0;
        int boxHeight = 0;
        int gap = 0; // between boxes, between lines and around all of them, in pixels
    };

    // A box that is wider than a line is cut to the line's width.
    void arrange(const std::vector<int>& widths, const Metrics&);

    int height() const { return height_; }
    const QRect& box(int number) const { return boxes_[static_cast<std::size_t>(number)]; }

    // The box at a point; -1 if there is none.
    int boxAt(const QPoint&) const;

    // The first box that reaches below y, or the number of boxes if none does.
    int firstBelow(int y) const;

    // The nearest box in the line above (lines is -1) or below (1). The box itself if there is no such line.
    int neighbour(int number, int lines) const;

private:
    std::vector<QRect> boxes_;
    int height_ = 0;
    int lineDistance_ = 1;
};
