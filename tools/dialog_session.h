#pragma once

#include "platform/windows/presenter.h"
#include "tools/message_loop.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

constexpr int exit_cancelled = 5;
constexpr int exit_not_shown = 6;
constexpr const char* dialog_exit_codes =
    "5 cancelled, 6 the dialog (or its picture) could not be shown";

/// What the verbs that show a dialog share: Ctrl+C ends it, and --picture draws it into a file
/// instead of asking a person. Made before any other thread.
class DialogSession {
  public:
    /// With a path, dialogs are drawn there (PNG) and closed.
    explicit DialogSession(const std::string& picture);
    DialogSession(const DialogSession&) = delete;
    DialogSession& operator=(const DialogSession&) = delete;

    static void add_picture_option(CLI::App& verb, std::string& picture);

    /// Ends the tool for a dialog that was not confirmed: drawn, cancelled, or (-1) not shown.
    void end_without_answer(int result) const;

  private:
    class Picture;

    const MessageLoop loop_;
    std::shared_ptr<Picture> picture_;
};
