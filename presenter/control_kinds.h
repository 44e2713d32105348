#pragma once

#include "presenter/control.h"

/// What is particular to a kind of control.
struct ControlKind {
    const char* name;
    QWidget* (*make)(Control& control, QWidget* dialog);

    /// Shows the new view; `before` is the one that was shown up to now.
    void (*show)(QWidget& widget, const QJsonObject& view, const QJsonObject& before);

    /// Whether the texts fit in.
    bool (*fits)(const QWidget& widget);
};

/// One that shows nothing, for a name that is not known.
const ControlKind& kind_named(const QString& name);
