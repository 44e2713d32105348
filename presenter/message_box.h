#pragma once

#include "presenter/control.h"

#include <QMessageBox>

/// A question to the person; the answer is reported, and the application closes the box.
class MessageBox : public QMessageBox {
  public:
    /// `view` as of "ask", see presenter_wire.h.
    MessageBox(const QJsonObject& view, Report report);

    void done(int) override {}

  protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void report(const char* verb, qint64 value = 0) { report_(verb, window_, value, {}); }

    const qint64 window_;
    const Report report_;
};
