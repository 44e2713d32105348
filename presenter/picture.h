#pragma once

#include <QString>

// Dialogs without a screen, for documentation and tests. A view, as of "open" in
// presenter_wire.h, is read from standard input; the exit code tells whether all went well.

/// Draws the dialog into a PNG file.
int draw_picture(const QString& path);

/// Prints the windows of the controls whose texts do not fit, one a line.
int measure_texts();
