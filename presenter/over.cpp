#include "presenter/over.h"

#include <QApplication>
#include <QWindow>

void put_over(QWidget& window, QWidget& owner) {
    window.winId(); // makes the native window
    window.windowHandle()->setTransientParent(owner.windowHandle());
    window.adjustSize();
    window.move(owner.geometry().center() - window.rect().center());
}

void raise_over(QWidget& owner) {
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && window->windowHandle() &&
            window->windowHandle()->transientParent() == owner.windowHandle()) {
            window->raise();
            window->activateWindow();
        }
    }
}
