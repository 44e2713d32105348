#pragma once

#include "platform/base/window_styles.h"
#include "platform/messages/message.h"
#include "platform/windows/presenter.h"

#include <memory>
#include <string>
#include <vector>

class CWnd;

namespace tarnel {

/// What a window is made with, in pixels: on the screen, or in the parent's client area.
struct NewWindow {
    std::string class_name;
    std::string text;
    DWORD style = 0;
    DWORD ex_style = 0;
    int x = 0;
    int y = 0;
    int width = 0; ///< with the frame
    int height = 0;
    HWND parent = nullptr; ///< with WS_CHILD the parent, else the owner; of the same thread
    UINT id = 0;
};

/// How thick a window's frame is on each side.
RECT frame_of(DWORD style);

/// A window as plain state, with the behaviour of its class: all there is of it. Nothing of it
/// needs a screen. It belongs to the thread that made it and is used there alone; other threads
/// send messages.
///
/// A message goes to the framework's object first, where one is attached, and from there to
/// handle_message(). A window that is destroyed meanwhile stays in memory until the outermost of
/// its messages has been handled, so that what runs on may still look at it.
class Window {
  public:
    /// Makes a window of `what.class_name`, with `object`, unless null, attached to it before its
    /// first message. Null with the last error when there is no such class or the creation is
    /// refused.
    static HWND create(const NewWindow& what, CWnd* object);

    /// The window of the calling thread that `handle` names, if this room has made it; else null.
    static Window* of(HWND handle);

    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    virtual ~Window();

    HWND handle() const { return handle_; }

    const std::string& class_name() const { return class_name_; }

    UINT id() const { return id_; }

    DWORD style() const { return style_; }

    Window* parent() const { return parent_; }

    Window* owner() const { return owner_; }

    /// In the order of their creation, which is the tab order.
    const std::vector<Window*>& children() const { return children_; }

    /// The child of that identifier, or null.
    Window* child(UINT id) const;

    /// The framework's object that stands for the window: the attached one, else one that lives as
    /// long as the window.
    CWnd& object();

    void attach(CWnd* object) { object_ = object; }

    CWnd* attached() const { return object_; }

    const std::string& text() const { return text_; }

    void set_text(std::string text);

    /// The window with its frame, on the screen or in the parent's client area.
    const RECT& rectangle() const { return rectangle_; }

    /// The same on the screen.
    RECT screen_rectangle() const;

    /// Where the client area begins on the screen.
    POINT client_origin() const;

    int client_width() const;
    int client_height() const;

    /// Tells the window by WM_MOVE and WM_SIZE.
    void move(const RECT& rectangle);

    /// The window's own state, whatever its parent's is.
    bool is_shown() const { return (style_ & WS_VISIBLE) != 0; }

    bool is_enabled() const { return (style_ & WS_DISABLED) == 0; }

    /// With all its parents: whether a person sees it, and can use it.
    bool is_visible() const;
    bool takes_input() const;

    void show(bool visible);
    void enable(bool enabled);

    /// What the window's class does with a message that the application has not handled.
    virtual LRESULT handle_message(UINT message, WPARAM wparam, LPARAM lparam);

    /// What a presenter shows of the window. Classes add their own.
    virtual void describe(ControlView& view) const;

    /// Something that is shown has changed.
    void changed();

    /// Tells the parent by WM_COMMAND. The window may be gone afterwards.
    void notify_parent(WORD code);

    /// Keeps a window in memory while it is worked on.
    class InUse {
      public:
        explicit InUse(Window& window) : window_(window) { ++window_.uses_; }

        InUse(const InUse&) = delete;
        InUse& operator=(const InUse&) = delete;

        ~InUse() {
            if (--window_.uses_ == 0 && window_.ended_) {
                delete &window_;
            }
        }

      private:
        Window& window_;
    };

  protected:
    explicit Window(const NewWindow& what);

    /// Something that is shown has changed in this top-level window: in itself or in a window
    /// below it.
    virtual void part_changed(Window& part);

  private:
    static LRESULT receive(void* context, HWND handle, UINT message, WPARAM wparam, LPARAM lparam);
    static void abandon(void* context);
    static std::unique_ptr<Window> make(const NewWindow& what);

    bool enter_tree(HWND parent);
    void leave_tree();
    bool send_creation();
    LRESULT copy_text(WPARAM size, LPARAM buffer) const;
    void destroy_owned();
    void end();

    HWND handle_ = nullptr;
    const std::string class_name_;
    const UINT id_;
    DWORD style_;
    const DWORD ex_style_;
    std::string text_;
    RECT rectangle_;
    Window* parent_ = nullptr;
    Window* owner_ = nullptr;
    std::vector<Window*> children_;
    std::vector<Window*> owned_;
    CWnd* object_ = nullptr;
    std::unique_ptr<CWnd> temporary_;
    int uses_ = 0;
    bool ended_ = false;

    friend std::unique_ptr<Window> make_plain_window(const NewWindow& what);
};

} // namespace tarnel
