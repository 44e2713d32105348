#include "presenter/screen.h"

#include "presenter/dialog.h"
#include "presenter/message_box.h"
#include "presenter/over.h"

#include <utility>

Screen::Screen(int descriptor, std::function<void()> end)
    : line_(
          descriptor, [this](const QJsonObject& message) { receive(message); }, std::move(end)) {}

void Screen::receive(const QJsonObject& message) {
    const QString verb = message["do"].toString();
    const auto report = [this](const char* what, qint64 window, qint64 value, const QString& text) {
        return line_.report(what, window, value, text);
    };
    const auto known = windows_.find(message["window"].toInteger());
    if (verb == "open") {
        open(std::make_unique<Dialog>(message, report), message);
    } else if (verb == "ask") {
        open(std::make_unique<MessageBox>(message, report), message);
    } else if (verb == "close" && known != windows_.end()) {
        known->second.release()->deleteLater(); // it may be what is being answered
        windows_.erase(known);
    } else if (verb == "update" && known != windows_.end()) {
        auto& dialog = static_cast<Dialog&>(*known->second);
        dialog.update_view(message);
        dialog.setVisible(message["visible"].toBool());
    }
}

void Screen::open(std::unique_ptr<QWidget> window, const QJsonObject& message) {
    const auto owner = windows_.find(message["owner"].toInteger());
    if (owner != windows_.end()) {
        put_over(*window, *owner->second);
    }
    window->show();
    windows_[message["window"].toInteger()] = std::move(window);
}
