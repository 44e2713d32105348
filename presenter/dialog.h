#pragma once

#include "presenter/control.h"

#include <QDialog>
#include <memory>
#include <vector>

/// A dialog on the screen, at the size and with the places that the application gives. It closes
/// and moves nothing by itself but the focus: what the person does is reported.
class Dialog : public QDialog {
  public:
    /// `view` as of "open", see presenter_wire.h.
    Dialog(const QJsonObject& view, Report report);

    /// `view` as of "update".
    void update_view(const QJsonObject& view);

    const std::vector<std::unique_ptr<Control>>& controls() const { return controls_; }

  protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

    // Never by itself.
    void accept() override {}

    void reject() override {}

  private:
    void add_controls(const QJsonObject& view);
    void give_mnemonics();
    void show_focus(const QJsonObject& view);
    Control* control(qint64 window) const;
    Control* control_of(const QObject* widget) const;
    Control* stop_after(const Control& control) const;
    void report(const char* verb, qint64 value = 0);
    void report_focus(const Control& control);

    const qint64 window_;
    const Report report_;
    std::vector<std::unique_ptr<Control>> controls_; ///< in tab order
    bool takes_input_ = true;
    bool painted_ = false;
    bool updating_ = false;     ///< by what the application shows
    qint64 focus_reported_ = 0; ///< the last such action
};
