#include "tools/dialog_session.h"

#include "platform/messages/message.h"
#include "platform/windows/dialog_picture.h"
#include "tools/verbs.h"

#include <fmt/format.h>

#include <utility>

/// Draws the first dialog, and closes each.
class DialogSession::Picture final : public tarnel::Presenter {
  public:
    explicit Picture(std::string path) : path_(std::move(path)) {}

    bool ready() override { return true; }

    bool open(const tarnel::DialogView& dialog) override {
        if (!std::exchange(tried_, true)) {
            drawn_ = tarnel::draw_dialog(dialog, path_);
        }
        PostMessageA(dialog.window, WM_CLOSE, 0, 0);
        return true;
    }

    void update(const tarnel::DialogView&) override {}

    bool ask(const tarnel::MessageBoxView&) override { return false; }

    void close(HWND) override {}

    bool drawn() const { return drawn_; }

    const std::string& path() const { return path_; }

  private:
    const std::string path_;
    bool tried_ = false;
    bool drawn_ = false;
};

DialogSession::DialogSession(const std::string& picture)
    : picture_(picture.empty() ? nullptr : std::make_shared<Picture>(picture)) {
    if (picture_) {
        tarnel::set_presenter(picture_);
    }
}

void DialogSession::add_picture_option(CLI::App& verb, std::string& picture) {
    verb.add_option("--picture", picture, "Only draw the dialog, into this file (PNG)");
}

void DialogSession::end_without_answer(int result) const {
    if (picture_ && !picture_->drawn()) {
        fail(exit_not_shown, fmt::format("The picture {} could not be drawn.", picture_->path()));
    }
    if (picture_) {
        throw CLI::Success();
    }
    if (result == -1) {
        fail(exit_not_shown, "The dialog could not be shown.");
    }
    fail(exit_cancelled, "Cancelled; nothing has changed.");
}
