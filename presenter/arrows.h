#pragma once

#include <QWidget>
#include <functional>

/// A pair of arrows one above the other, for the mouse alone: the keys belong to the box beside
/// them. `step` is called with 1 or -1, again and again while an arrow is held.
class Arrows : public QWidget {
  public:
    Arrows(QWidget* parent, const std::function<void(int)>& step);
};
