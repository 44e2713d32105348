#include "presenter/control_kinds.h"

#include "presenter/arrows.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QJsonArray>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QStyleOptionComboBox>
#include <algorithm>

namespace {

constexpr int longest_text = 30'000;
constexpr int title_indent = 8;

/// Ticked by the application alone.
class CheckBox : public QCheckBox {
  public:
    using QCheckBox::QCheckBox;

  protected:
    void nextCheckState() override {}
};

/// Has its title in the line of the frame.
class GroupBox : public QGroupBox {
  public:
    using QGroupBox::QGroupBox;

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const QRect text = title_place();
        painter.save();
        if (!title().isEmpty()) {
            painter.setClipRegion(QRegion(rect()) - text.adjusted(-3, 0, 3, 0));
        }
        painter.setPen(palette().color(QPalette::Mid));
        painter.drawRoundedRect(rect().adjusted(0, text.height() / 2, -1, -1), 2, 2);
        painter.restore();
        style()->drawItemText(&painter, text, Qt::TextShowMnemonic, palette(), isEnabled(), title(),
                              QPalette::WindowText);
    }

  private:
    QRect title_place() const {
        return {QPoint(title_indent, 0), fontMetrics().size(Qt::TextShowMnemonic, title())};
    }
};

int width_of(const QWidget& widget, const QString& text) {
    return widget.fontMetrics().size(Qt::TextShowMnemonic, text).width();
}

int metric(const QWidget& widget, QStyle::PixelMetric which) {
    return widget.style()->pixelMetric(which, nullptr, &widget);
}

template <typename Widget>
void show_text(QWidget& widget, const QJsonObject& view, const QJsonObject&) {
    static_cast<Widget&>(widget).setText(view["text"].toString());
}

void show_nothing(QWidget&, const QJsonObject&, const QJsonObject&) {}

bool fits_always(const QWidget&) {
    return true;
}

QWidget* make_button(Control& control, QWidget* dialog) {
    auto* const button = new QPushButton(dialog);
    button->setAutoDefault(false);
    QObject::connect(button, &QPushButton::clicked, [&control] { control.report("click"); });
    return button;
}

bool button_fits(const QWidget& widget) {
    constexpr int border = 3;
    return width_of(widget, static_cast<const QPushButton&>(widget).text()) + 2 * border <=
               widget.width() &&
           widget.fontMetrics().ascent() <= widget.height();
}

QWidget* make_check(Control& control, QWidget* dialog) {
    auto* const box = new CheckBox(dialog);
    QObject::connect(box, &QCheckBox::clicked, [&control] { control.report("click"); });
    return box;
}

void show_check(QWidget& widget, const QJsonObject& view, const QJsonObject&) {
    auto& box = static_cast<QCheckBox&>(widget);
    constexpr Qt::CheckState states[] = {Qt::Unchecked, Qt::Checked, Qt::PartiallyChecked};
    box.setText(view["text"].toString());
    box.setCheckState(states[std::clamp(view["check"].toInt(), 0, 2)]);
}

bool check_fits(const QWidget& widget) {
    return metric(widget, QStyle::PM_IndicatorWidth) +
               metric(widget, QStyle::PM_CheckBoxLabelSpacing) +
               width_of(widget, static_cast<const QCheckBox&>(widget).text()) <=
           widget.width();
}

/// Below the others: it may come after them.
QWidget* make_group(Control&, QWidget* dialog) {
    auto* const group = new GroupBox(dialog);
    group->lower();
    return group;
}

void show_group(QWidget& widget, const QJsonObject& view, const QJsonObject&) {
    static_cast<QGroupBox&>(widget).setTitle(view["text"].toString());
}

bool group_fits(const QWidget& widget) {
    return width_of(widget, static_cast<const QGroupBox&>(widget).title()) + 2 * title_indent <=
           widget.width();
}

QWidget* make_label(Control&, QWidget* dialog) {
    auto* const label = new QLabel(dialog);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    return label;
}

bool label_fits(const QWidget& widget) {
    const QRect all = widget.fontMetrics().boundingRect(
        QRect(0, 0, widget.width(), widget.height()), Qt::TextWordWrap | Qt::TextShowMnemonic,
        static_cast<const QLabel&>(widget).text());
    // Nothing stands in the lowest part of a line but descenders.
    return all.width() <= widget.width() &&
           all.height() - widget.fontMetrics().descent() <= widget.height();
}

QWidget* make_edit(Control& control, QWidget* dialog) {
    auto* const edit = new QLineEdit(dialog);
    edit->setMaxLength(longest_text);
    QObject::connect(edit, &QLineEdit::textEdited,
                     [&control](const QString& text) { control.report("type", 0, text); });
    return edit;
}

/// Where a byte of a text in UTF-8 stands in the same text in UTF-16.
int place_of_byte(const QString& text, const QJsonValue& byte) {
    return static_cast<int>(QString::fromUtf8(text.toUtf8().left(byte.toInt())).size());
}

/// The cursor stays where the person has put it, unless the application writes or selects.
void show_edit(QWidget& widget, const QJsonObject& view, const QJsonObject& before) {
    auto& edit = static_cast<QLineEdit&>(widget);
    const QString text = view["text"].toString();
    const bool rewritten = text != edit.text();
    const bool selected = view["from"] != view["to"] &&
                          (view["from"] != before["from"] || view["to"] != before["to"]);
    if (rewritten) {
        edit.setText(text);
    }
    if (rewritten || selected) {
        const int from = place_of_byte(text, view["from"]);
        const int to = place_of_byte(text, view["to"]);
        edit.setCursorPosition(from);
        edit.setSelection(from, to - from);
    }
}

QWidget* make_list(Control& control, QWidget* dialog) {
    auto* const list = new QComboBox(dialog);
    QObject::connect(list, &QComboBox::activated,
                     [&control](int position) { control.report("choose", position); });
    return list;
}

void show_list(QWidget& widget, const QJsonObject& view, const QJsonObject& before) {
    auto& list = static_cast<QComboBox&>(widget);
    if (view["items"] != before["items"]) {
        list.clear();
        for (const QJsonValue& item : view["items"].toArray()) {
            list.addItem(item.toString());
        }
    }
    list.setCurrentIndex(view["selection"].toInt());
}

bool list_fits(const QWidget& widget) {
    const auto& list = static_cast<const QComboBox&>(widget);
    QStyleOptionComboBox option;
    option.initFrom(&list);
    const int room =
        list.style()
            ->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, &list)
            .width();
    for (int i = 0; i < list.count(); ++i) {
        if (list.fontMetrics().horizontalAdvance(list.itemText(i)) > room) {
            return false;
        }
    }
    return true;
}

QWidget* make_progress(Control&, QWidget* dialog) {
    auto* const bar = new QProgressBar(dialog);
    bar->setTextVisible(false);
    return bar;
}

/// Without a range it would move by itself.
void show_progress(QWidget& widget, const QJsonObject& view, const QJsonObject&) {
    auto& bar = static_cast<QProgressBar&>(widget);
    const int minimum = view["minimum"].toInt();
    bar.setRange(minimum, std::max(view["maximum"].toInt(), minimum + 1));
    bar.setValue(view["position"].toInt());
}

QWidget* make_arrows(Control& control, QWidget* dialog) {
    return new Arrows(dialog, [&control](int steps) { control.report("step", steps); });
}

QWidget* make_nothing(Control&, QWidget* dialog) {
    return new QWidget(dialog);
}

constexpr ControlKind kinds[] = {
    {"button", make_button, show_text<QPushButton>, button_fits},
    {"check", make_check, show_check, check_fits},
    {"group", make_group, show_group, group_fits},
    {"label", make_label, show_text<QLabel>, label_fits},
    {"edit", make_edit, show_edit, fits_always},
    {"list", make_list, show_list, list_fits},
    {"progress", make_progress, show_progress, fits_always},
    {"arrows", make_arrows, show_nothing, fits_always},
    {"", make_nothing, show_nothing, fits_always},
};

} // namespace

const ControlKind& kind_named(const QString& name) {
    const auto* const found =
        std::find_if(std::begin(kinds), std::end(kinds) - 1,
                     [&name](const ControlKind& kind) { return name == QLatin1String(kind.name); });
    return *found;
}
