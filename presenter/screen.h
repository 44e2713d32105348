#pragma once

#include "presenter/line.h"

#include <QWidget>
#include <map>
#include <memory>

/// What one thread of the application shows on the screen.
class Screen {
  public:
    /// `end` is told once when the thread's line has ended, and may destroy this.
    Screen(int descriptor, std::function<void()> end);

  private:
    void receive(const QJsonObject& message);
    void open(std::unique_ptr<QWidget> window, const QJsonObject& message);

    Line line_;
    std::map<qint64, std::unique_ptr<QWidget>> windows_;
};
