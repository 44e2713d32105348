#include "presenter/control.h"

#include "presenter/control_kinds.h"

#include <utility>

Control::Control(const QJsonObject& view, QWidget* dialog, Report report)
    : window_(view["window"].toInteger()), report_(std::move(report)),
      kind_(&kind_named(view["kind"].toString())), widget_(kind_->make(*this, dialog)) {
    show(view, 0);
    const bool takes_focus = widget_->focusPolicy() != Qt::NoFocus;
    if (takes_focus) {
        widget_->setFocusPolicy(view["stop"].toBool() ? Qt::StrongFocus : Qt::ClickFocus);
    }
}

void Control::show(const QJsonObject& view, qint64 seen) {
    widget_->setGeometry(view["x"].toInt(), view["y"].toInt(), view["width"].toInt(),
                         view["height"].toInt());
    widget_->setEnabled(view["enabled"].toBool());
    widget_->setVisible(view["visible"].toBool());
    if (seen >= reported_) {
        kind_->show(*widget_, view, view_);
        view_ = view;
    }
}

void Control::report(const char* verb, qint64 value, const QString& text) {
    reported_ = report_(verb, window_, value, text);
}

bool Control::is(const char* kind) const {
    return qstrcmp(kind_->name, kind) == 0;
}

bool Control::fits() const {
    return kind_->fits(*widget_);
}
