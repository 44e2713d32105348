#pragma once

#include "platform/base/export.h"
#include "platform/base/types.h"

#include <memory>
#include <string>
#include <vector>

// The line between the state of dialogs, which is all in this layer, and whoever shows it to a
// person. The state decides: it tells the presenter what there is to see, and the presenter brings
// back what the person does (user_actions.h).

namespace tarnel {

/// A control as it is to be shown. What its class has no use for stays as it is here.
struct ControlView {
    HWND window = nullptr;
    UINT id = 0;
    std::string class_name; ///< "Button", "Edit", ...
    std::string text;       ///< "&" marks the mnemonic, in what has one
    DWORD style = 0;
    RECT rectangle{}; ///< pixels, relative to the dialog's client area
    bool visible = false;
    bool enabled = false;

    int check = 0;                  ///< of a check box, BST_
    std::vector<std::string> items; ///< of a drop-down list
    int selection = -1;             ///< its position; -1 for none
    int minimum = 0;                ///< of a progress bar or up-down control
    int maximum = 0;
    int position = 0;
    HWND buddy = nullptr;    ///< the edit box that an up-down control steps
    int selection_start = 0; ///< of an edit box, in bytes
    int selection_end = 0;
};

/// A dialog as it is to be shown.
struct DialogView {
    HWND window = nullptr;
    HWND owner = nullptr; ///< a dialog to stay above; null for none
    std::string caption;
    int width = 0; ///< of the client area, pixels
    int height = 0;
    bool visible = false;
    bool enabled = false; ///< not while another dialog waits for an answer
    HWND focus = nullptr;
    int default_button = 0; ///< what Enter presses, unless a button has the focus; 0 for none
    std::vector<ControlView> controls; ///< in tab order
};

struct MessageBoxView {
    HWND window = nullptr; ///< takes the answer, see user_actions.h
    HWND owner = nullptr;
    std::string caption;
    std::string text;
    UINT type = 0; ///< MB_ buttons and icon
};

/// Shows the dialogs of a process. Each call comes on the thread that owns the dialog, so calls may
/// come on several threads at once; none may wait for a person, and none may call back at once:
/// what the person does is brought later, by a message of that thread.
class TARNEL_PLATFORM_API Presenter {
  public:
    virtual ~Presenter();

    /// Whether the calling thread's dialogs can be shown now. Starts what that needs.
    virtual bool ready() = 0;

    /// Shows a dialog for the first time; false when it cannot.
    virtual bool open(const DialogView& dialog) = 0;

    /// Shows what has changed: of `changed.controls` only those that have.
    virtual void update(const DialogView& changed) = 0;

    /// Asks the person; false when it cannot.
    virtual bool ask(const MessageBoxView& box) = 0;

    /// The dialog or message box is gone.
    virtual void close(HWND window) = 0;
};

/// Has `presenter` show what is opened from now on; null: nobody shows anything. Without a call, a
/// program of its own shows it on the display. May be called on any thread.
TARNEL_PLATFORM_API void set_presenter(std::shared_ptr<Presenter> presenter);

} // namespace tarnel
