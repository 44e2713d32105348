#include "presenter/picture.h"

#include "presenter/dialog.h"

#include <QFile>
#include <QJsonDocument>
#include <QPixmap>
#include <cstdio>

namespace {

/// Null when there is none.
std::unique_ptr<Dialog> read_dialog() {
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly)) {
        return nullptr;
    }
    const auto view = QJsonDocument::fromJson(input.readAll());
    const auto nobody = [](const char*, qint64, qint64, const QString&) { return qint64{0}; };
    return view.isObject() ? std::make_unique<Dialog>(view.object(), nobody) : nullptr;
}

} // namespace

int draw_picture(const QString& path) {
    const auto dialog = read_dialog();
    if (!dialog) {
        return 1;
    }
    dialog->show(); // so that what is laid out when shown is
    return dialog->grab().save(path, "PNG") ? 0 : 1;
}

int measure_texts() {
    const auto dialog = read_dialog();
    if (!dialog) {
        return 1;
    }
    for (const auto& control : dialog->controls()) {
        if (!control->fits()) {
            std::printf("%lld\n", static_cast<long long>(control->window()));
        }
    }
    return 0;
}
