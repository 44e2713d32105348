#include "platform/base/last_error.h"
#include "platform/base/never_destroyed.h"
#include "platform/desktop/foreign_windows.h"
#include "platform/desktop/window_text.h"
#include "platform/desktop/x11_connection.h"
#include "platform/modules/utf8.h"

#include <algorithm>
#include <mutex>
#include <span>
#include <vector>

namespace tarnel {
namespace {

constexpr std::uint32_t max_words = 1 << 16; ///< of a property that is looked at

struct Property {
    xcb_atom_t type = XCB_ATOM_NONE;
    std::string bytes;
};

/// Looks at windows for the whole process, through a connection of its own.
class Onlooker {
  public:
    /// Top-level windows from the bottom to the top. False, with the last error, without a server.
    bool list(std::vector<xcb_window_t>& windows);

    // Empty when the window has none, or is gone.
    std::string class_of(xcb_window_t window);
    std::string title_of(xcb_window_t window);

  private:
    xcb_atom_t atom(std::string_view name);
    Property property(xcb_window_t window, xcb_atom_t name);
    void list_managed(std::vector<xcb_window_t>& windows);
    void list_children(std::vector<xcb_window_t>& windows);

    std::mutex looking_lock_;
    std::unique_ptr<X11Connection> connection_;
};

Onlooker& onlooker() {
    static NeverDestroyed<Onlooker> instance;
    return instance.get();
}

bool Onlooker::list(std::vector<xcb_window_t>& windows) {
    const std::lock_guard guard(looking_lock_);
    if (!renew(connection_)) {
        return false;
    }
    list_managed(windows);
    if (windows.empty()) {
        list_children(windows);
    }
    if (connection_->is_broken()) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return false;
    }
    return true;
}

/// As the window manager, where there is one, keeps them.
void Onlooker::list_managed(std::vector<xcb_window_t>& windows) {
    const Property list = property(connection_->root(), atom("_NET_CLIENT_LIST_STACKING"));
    windows.resize(list.bytes.size() / sizeof(xcb_window_t));
    std::ranges::copy(std::span(list.bytes).first(windows.size() * sizeof(xcb_window_t)),
                      reinterpret_cast<char*>(windows.data()));
}

void Onlooker::list_children(std::vector<xcb_window_t>& windows) {
    const auto tree = connection_->reply<xcb_query_tree_reply_t>(
        ::xcb_query_tree(connection_->get(), connection_->root()));
    if (tree) {
        const std::span children(::xcb_query_tree_children(tree.get()), tree->children_len);
        windows.assign(children.begin(), children.end());
    }
}

/// The class is the second text there, behind the name of the program's instance.
std::string Onlooker::class_of(xcb_window_t window) {
    const std::lock_guard guard(looking_lock_);
    if (!renew(connection_)) {
        return {};
    }
    const std::string texts = property(window, XCB_ATOM_WM_CLASS).bytes;
    const std::size_t begin = std::min(texts.find('\0'), texts.size() - 1) + 1;
    const std::string text = texts.substr(begin, texts.find('\0', begin) - begin);
    return text_prefix(text) == text.size() ? text : utf8_from_compound_text(text);
}

std::string Onlooker::title_of(xcb_window_t window) {
    const std::lock_guard guard(looking_lock_);
    if (!renew(connection_)) {
        return {};
    }
    Property title = property(window, atom("_NET_WM_NAME"));
    if (!title.bytes.empty()) {
        return std::move(title.bytes);
    }
    title = property(window, XCB_ATOM_WM_NAME);
    return title.type == atom("UTF8_STRING") ? title.bytes : utf8_from_compound_text(title.bytes);
}

xcb_atom_t Onlooker::atom(std::string_view name) {
    const auto reply = connection_->reply<xcb_intern_atom_reply_t>(::xcb_intern_atom(
        connection_->get(), 0, static_cast<std::uint16_t>(name.size()), name.data()));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

Property Onlooker::property(xcb_window_t window, xcb_atom_t name) {
    const auto reply = connection_->reply<xcb_get_property_reply_t>(::xcb_get_property(
        connection_->get(), 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, max_words));
    if (!reply) {
        return {};
    }
    const auto length = static_cast<std::size_t>(::xcb_get_property_value_length(reply.get()));
    return {reply->type, {static_cast<const char*>(::xcb_get_property_value(reply.get())), length}};
}

// A handle of the layer's own has its lowest bits clear.

HWND handle_of(xcb_window_t window) {
    return reinterpret_cast<HWND>(std::uint64_t{window} << 2 | 1);
}

/// XCB_NONE for a handle of another kind.
xcb_window_t foreign(HWND window) {
    const auto handle = reinterpret_cast<std::uint64_t>(window);
    return (handle & 3) == 1 ? static_cast<xcb_window_t>(handle >> 2) : xcb_window_t{XCB_NONE};
}

} // namespace
} // namespace tarnel

BOOL EnumWindows(WNDENUMPROC visit, LPARAM context) {
    std::vector<xcb_window_t> windows;
    if (!tarnel::onlooker().list(windows)) {
        return FALSE;
    }
    const auto stop = std::find_if(windows.rbegin(), windows.rend(), [&](xcb_window_t window) {
        return !visit(tarnel::handle_of(window), context);
    });
    return stop == windows.rend();
}

int GetClassNameA(HWND window, LPSTR text, int size) {
    return tarnel::copy_text(tarnel::onlooker().class_of(tarnel::foreign(window)), text, size);
}

int GetWindowTextA(HWND window, LPSTR text, int size) {
    return tarnel::copy_text(tarnel::onlooker().title_of(tarnel::foreign(window)), text, size);
}
