#include "presenter/message_box.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QPushButton>
#include <utility>

namespace {

using Box = QMessageBox;

/// The buttons of each type, as of MB_.
constexpr Box::StandardButton none = Box::NoButton;
constexpr Box::StandardButton buttons_of_type[][3] = {
    {Box::Ok, none, none},
    {Box::Ok, Box::Cancel, none},
    {Box::Abort, Box::Retry, Box::Ignore},
    {Box::Yes, Box::No, Box::Cancel},
    {Box::Yes, Box::No, none},
    {Box::Retry, Box::Cancel, none},
};

constexpr Box::Icon icons[] = {Box::NoIcon, Box::Critical, Box::Question, Box::Warning,
                               Box::Information};

/// The buttons by their identifiers, from 1.
constexpr Box::StandardButton ids[] = {Box::Ok,     Box::Cancel, Box::Abort, Box::Retry,
                                       Box::Ignore, Box::Yes,    Box::No};

template <std::size_t count, typename Value>
const Value& at(const Value (&values)[count], int index) {
    return values[static_cast<std::size_t>(index) % count];
}

} // namespace

MessageBox::MessageBox(const QJsonObject& view, Report report)
    : window_(view["window"].toInteger()), report_(std::move(report)) {
    const int type = view["type"].toInt();
    setWindowModality(Qt::NonModal); // the application says which dialogs have to wait for it
    setTextFormat(Qt::PlainText);
    setWindowTitle(view["caption"].toString());
    setText(view["text"].toString());
    setIcon(at(icons, type >> 4 & 0xF));
    for (const StandardButton wanted : at(buttons_of_type, type & 0xF)) {
        const auto id = std::find(std::begin(ids), std::end(ids), wanted) - std::begin(ids) + 1;
        if (wanted != none) {
            connect(addButton(wanted), &QPushButton::clicked,
                    [this, id] { this->report("answer", id); });
        }
    }
    setDefaultButton(at(buttons_of_type, type & 0xF)[0]);
}

void MessageBox::closeEvent(QCloseEvent* event) {
    event->ignore();
    report("close");
}

void MessageBox::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        report("close");
    } else {
        QMessageBox::keyPressEvent(event);
    }
}
