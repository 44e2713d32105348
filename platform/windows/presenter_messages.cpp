#include "platform/windows/presenter_messages.h"

#include "platform/base/window_styles.h"
#include "platform/windows/json.h"
#include "platform/windows/user_actions.h"

#include <array>
#include <utility>

namespace tarnel {
namespace {

std::int64_t number_of(HWND window) {
    return reinterpret_cast<std::intptr_t>(window);
}

const char* kind_of_button(DWORD style) {
    switch (style & BS_TYPEMASK) {
    case BS_CHECKBOX:
    case BS_AUTOCHECKBOX:
        return "check";
    case BS_GROUPBOX:
        return "group";
    default:
        return "button";
    }
}

constexpr std::pair<std::string_view, const char*> kinds[] = {
    {"ComboBox", "list"},          {"Edit", "edit"},
    {"Static", "label"},           {"msctls_progress32", "progress"},
    {"msctls_updown32", "arrows"},
};

const char* kind_of(const ControlView& control) {
    for (const auto& [class_name, kind] : kinds) {
        if (class_name == control.class_name) {
            return kind;
        }
    }
    return control.class_name == "Button" ? kind_of_button(control.style) : "";
}

JsonObject describe(const ControlView& control) {
    const RECT& place = control.rectangle;
    JsonObject all;
    all.add("window", number_of(control.window))
        .add("id", std::int64_t{control.id})
        .add("kind", kind_of(control))
        .add("text", control.text)
        .add("x", place.left)
        .add("y", place.top)
        .add("width", place.right - place.left)
        .add("height", place.bottom - place.top)
        .add("visible", control.visible)
        .add("enabled", control.enabled)
        .add("stop", (control.style & WS_TABSTOP) != 0)
        .add("check", control.check)
        .add("items", control.items)
        .add("selection", control.selection)
        .add("minimum", control.minimum)
        .add("maximum", control.maximum)
        .add("position", control.position)
        .add("from", control.selection_start)
        .add("to", control.selection_end);
    return all;
}

} // namespace

std::string dialog_message(std::string_view verb, const DialogView& dialog, std::int64_t seen) {
    std::vector<JsonObject> controls;
    for (const ControlView& control : dialog.controls) {
        controls.push_back(describe(control));
    }
    return JsonObject()
        .add("do", verb)
        .add("seen", seen)
        .add("window", number_of(dialog.window))
        .add("owner", number_of(dialog.owner))
        .add("caption", dialog.caption)
        .add("width", dialog.width)
        .add("height", dialog.height)
        .add("visible", dialog.visible)
        .add("enabled", dialog.enabled)
        .add("focus", number_of(dialog.focus))
        .add("default", dialog.default_button)
        .add("controls", controls)
        .text();
}

std::string question_message(const MessageBoxView& box) {
    return JsonObject()
        .add("do", "ask")
        .add("window", number_of(box.window))
        .add("owner", number_of(box.owner))
        .add("caption", box.caption)
        .add("text", box.text)
        .add("type", std::int64_t{box.type})
        .text();
}

std::string closing_message(HWND window) {
    return JsonObject().add("do", "close").add("window", number_of(window)).text();
}

std::optional<UserAction> read_action(std::string_view line) {
    auto members = read_json(line);
    if (!members) {
        return std::nullopt;
    }
    UserAction action;
    for (JsonMember& member : *members) {
        if (member.name == "do") {
            action.verb = std::move(member.text);
        } else if (member.name == "n") {
            action.number = member.number;
        } else if (member.name == "window") {
            action.window = reinterpret_cast<HWND>(static_cast<std::intptr_t>(member.number));
        } else if (member.name == "value") {
            action.value = static_cast<int>(member.number);
        } else if (member.name == "text") {
            action.text = std::move(member.text);
        }
    }
    return action;
}

void perform(const UserAction& action) {
    using Action = const UserAction&;
    constexpr std::pair<std::string_view, void (*)(Action)> verbs[] = {
        {"click", [](Action did) { user_clicks(did.window); }},
        {"choose", [](Action did) { user_chooses(did.window, did.value); }},
        {"type", [](Action did) { user_types(did.window, did.text); }},
        {"step", [](Action did) { user_steps(did.window, did.value); }},
        {"focus", [](Action did) { user_focuses(did.window); }},
        {"press", [](Action did) { user_presses(did.window, static_cast<UINT>(did.value)); }},
        {"close", [](Action did) { user_closes(did.window); }},
        {"answer", [](Action did) { user_answers(did.window, did.value); }},
        {"shown", [](Action did) { user_sees(did.window); }},
    };
    for (const auto& [verb, act] : verbs) {
        if (verb == action.verb) {
            act(action);
            return;
        }
    }
}

} // namespace tarnel
