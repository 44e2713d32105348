#pragma once

#include <QWidget>

/// Keeps a window that is about to be shown over its owner, in the middle of it.
void put_over(QWidget& window, QWidget& owner);

/// Brings the window over `owner` to the front, which has to be answered first.
void raise_over(QWidget& owner);
