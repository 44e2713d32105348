#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QSocketNotifier>
#include <functional>

/// The line to one thread of the application (presenter_wire.h): JSON objects, one a text line.
/// Nothing here waits for the application.
class Line {
  public:
    /// Takes `descriptor` over. `receive` is given each object, `end` is told once that there will
    /// be none any more; `end` may destroy the line.
    Line(int descriptor, std::function<void(const QJsonObject&)> receive,
         std::function<void()> end);
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;
    ~Line();

    /// Tells what the person has done; the number that it gets.
    qint64 report(const char* verb, qint64 window, qint64 value, const QString& text);

  private:
    void read();
    bool take_lines();
    void write();

    const int descriptor_;
    const std::function<void(const QJsonObject&)> receive_;
    const std::function<void()> end_;
    QSocketNotifier readable_;
    QSocketNotifier writable_;
    QByteArray incoming_;
    QByteArray outgoing_;
    qint64 number_ = 0;
};
