#pragma once

#include <QJsonObject>
#include <QWidget>
#include <functional>

/// Tells the application what the person has done to a window; the number that this gets.
using Report =
    std::function<qint64(const char* verb, qint64 window, qint64 value, const QString& text)>;

struct ControlKind;

/// A control of a dialog. What it shows comes from the application alone; what the person does to
/// it is reported, and shown because the application says so.
class Control {
  public:
    /// `view` is one of a dialog's "controls" (presenter_wire.h); the dialog owns the widget.
    Control(const QJsonObject& view, QWidget* dialog, Report report);
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    QWidget* widget() const { return widget_; }

    qint64 window() const { return window_; }

    /// Shows how it is now. `seen` is the last action that the view has taken in.
    void show(const QJsonObject& view, qint64 seen);

    /// A line of the view that is shown now.
    QJsonValue shown(const char* name) const { return view_[QLatin1String(name)]; }

    void report(const char* verb, qint64 value = 0, const QString& text = {});

    bool is(const char* kind) const;

    /// Whether the tab key stops there.
    bool is_stop() const { return widget_->focusPolicy() == Qt::StrongFocus; }

    /// Whether all its texts fit, by the measures of their font.
    bool fits() const;

  private:
    const qint64 window_;
    const Report report_;
    const ControlKind* const kind_;
    QJsonObject view_;
    QWidget* const widget_;
    qint64 reported_ = 0; ///< the last action, which a view of before knows nothing of
};
