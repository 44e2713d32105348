#include "presenter/dialog.h"

#include "presenter/over.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFocusEvent>
#include <QJsonArray>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QTimer>
#include <algorithm>
#include <iterator>
#include <utility>

namespace {

/// What the person does, which a dialog that waits for another one does not take.
constexpr QEvent::Type inputs[] = {
    QEvent::KeyPress,
    QEvent::KeyRelease,
    QEvent::Shortcut,
    QEvent::ShortcutOverride,
    QEvent::MouseButtonPress,
    QEvent::MouseButtonRelease,
    QEvent::MouseButtonDblClick,
    QEvent::Wheel,
    QEvent::ContextMenu,
};

constexpr Qt::FocusReason by_person[] = {
    Qt::MouseFocusReason,
    Qt::TabFocusReason,
    Qt::BacktabFocusReason,
    Qt::ShortcutFocusReason,
};

/// The keys that the application decides on, with their numbers there.
constexpr std::pair<int, int> keys[] = {
    {Qt::Key_Return, 0x0D}, {Qt::Key_Enter, 0x0D}, {Qt::Key_Escape, 0x1B},
    {Qt::Key_Up, 0x26},     {Qt::Key_Down, 0x28},
};

template <typename Values, typename Value>
bool contains(const Values& values, Value value) {
    return std::find(std::begin(values), std::end(values), value) != std::end(values);
}

} // namespace

Dialog::Dialog(const QJsonObject& view, Report report)
    : QDialog(nullptr, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                           Qt::WindowCloseButtonHint | Qt::CustomizeWindowHint),
      window_(view["window"].toInteger()), report_(std::move(report)) {
    add_controls(view);
    give_mnemonics();
    update_view(view);
}

void Dialog::add_controls(const QJsonObject& view) {
    const Control* before = nullptr;
    for (const QJsonValue& part : view["controls"].toArray()) {
        const auto& added =
            controls_.emplace_back(std::make_unique<Control>(part.toObject(), this, report_));
        added->widget()->installEventFilter(this);
        for (auto* const inner : added->widget()->findChildren<QWidget*>()) {
            inner->installEventFilter(this);
        }
        if (before) {
            setTabOrder(before->widget(), added->widget());
        }
        before = added.get();
    }
    installEventFilter(this);
}

/// A label has a mnemonic only with a buddy; what it does is decided in eventFilter().
void Dialog::give_mnemonics() {
    for (const auto& control : controls_) {
        if (control->is("label")) {
            const Control* const next = stop_after(*control);
            static_cast<QLabel*>(control->widget())->setBuddy(next ? next->widget() : this);
        }
    }
}

void Dialog::update_view(const QJsonObject& view) {
    const QScopedValueRollback updating(updating_, true);
    const qint64 seen = view["seen"].toInteger();
    takes_input_ = view["enabled"].toBool();
    setWindowTitle(view["caption"].toString());
    setFixedSize(view["width"].toInt(), view["height"].toInt());
    for (const QJsonValue& part : view["controls"].toArray()) {
        if (Control* const changed = control(part["window"].toInteger())) {
            changed->show(part.toObject(), seen);
        }
    }
    for (const auto& each : controls_) {
        if (each->is("button")) {
            const bool is_default = each->shown("id") == view["default"];
            static_cast<QPushButton*>(each->widget())->setDefault(is_default);
        }
    }
    if (seen >= focus_reported_) {
        show_focus(view);
    }
}

void Dialog::show_focus(const QJsonObject& view) {
    const Control* const focused = control(view["focus"].toInteger());
    if (focused && focusWidget() != focused->widget()) {
        focused->widget()->setFocus(Qt::OtherFocusReason);
    }
}

Control* Dialog::control(qint64 window) const {
    const auto found =
        std::find_if(controls_.begin(), controls_.end(),
                     [window](const auto& known) { return known->window() == window; });
    return found != controls_.end() ? found->get() : nullptr;
}

Control* Dialog::control_of(const QObject* widget) const {
    const auto found =
        std::find_if(controls_.begin(), controls_.end(),
                     [widget](const auto& known) { return known->widget() == widget; });
    return found != controls_.end() ? found->get() : nullptr;
}

/// The control that a label or a frame stands for.
Control* Dialog::stop_after(const Control& control) const {
    const auto at = std::find_if(controls_.begin(), controls_.end(),
                                 [&control](const auto& known) { return known.get() == &control; });
    const auto stop =
        std::find_if(at, controls_.end(), [](const auto& known) { return known->is_stop(); });
    return stop != controls_.end() ? stop->get() : nullptr;
}

bool Dialog::eventFilter(QObject* object, QEvent* event) {
    if (!takes_input_ && contains(inputs, event->type())) {
        if (event->type() == QEvent::MouseButtonPress) {
            raise_over(*this);
        }
        return true;
    }
    Control* const control = control_of(object);
    if (!control) {
        return false;
    }
    // A control that is disabled loses the focus to the next one, and has it again later.
    if (event->type() == QEvent::FocusIn && !updating_ &&
        contains(by_person, static_cast<QFocusEvent*>(event)->reason())) {
        report_focus(*control);
    }
    const bool mnemonic =
        event->type() == QEvent::Shortcut && (control->is("label") || control->is("group"));
    if (const Control* const next = mnemonic ? stop_after(*control) : nullptr) {
        next->widget()->setFocus(Qt::ShortcutFocusReason);
    }
    return mnemonic;
}

void Dialog::keyPressEvent(QKeyEvent* event) {
    for (const auto& [key, number] : keys) {
        if (key == event->key()) {
            report("press", number);
        }
    }
}

void Dialog::closeEvent(QCloseEvent* event) {
    event->ignore();
    if (takes_input_) {
        report("close");
    }
}

void Dialog::paintEvent(QPaintEvent* event) {
    QDialog::paintEvent(event);
    if (!std::exchange(painted_, true)) {
        QTimer::singleShot(0, this, [this] { report("shown"); }); // with what is painted after it
    }
}

void Dialog::report(const char* verb, qint64 value) {
    report_(verb, window_, value, {});
}

void Dialog::report_focus(const Control& control) {
    focus_reported_ = report_("focus", control.window(), 0, {});
}
