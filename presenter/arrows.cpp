#include "presenter/arrows.h"

#include <QToolButton>
#include <QVBoxLayout>

Arrows::Arrows(QWidget* parent, const std::function<void(int)>& step) : QWidget(parent) {
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    for (const int steps : {1, -1}) {
        auto* const arrow = new QToolButton(this);
        arrow->setArrowType(steps > 0 ? Qt::UpArrow : Qt::DownArrow);
        arrow->setAutoRepeat(true);
        arrow->setFocusPolicy(Qt::NoFocus);
        arrow->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
        QObject::connect(arrow, &QToolButton::clicked, [step, steps] { step(steps); });
        column->addWidget(arrow);
    }
}
