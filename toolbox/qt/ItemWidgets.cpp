#include "ItemWidgets.h"

#include "Canvas.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStandardItemModel>
#include <QStyleFactory>
#include <QWheelEvent>

#include <algorithm>

namespace {

/// Takes presses in all of its rectangle, as items do, and not only on its text.
class WideCheckBox : public QCheckBox {
  public:
    using QCheckBox::QCheckBox;

  protected:
    bool hitButton(const QPoint& position) const override { return rect().contains(position); }
};

/// Choosing takes an opened list or the keys; a wheel that passes over changes nothing.
class PopUp : public QComboBox {
  public:
    using QComboBox::QComboBox;

  protected:
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

// Toolkit titles mark a key with an ampersand; ours mean the character.
QString ToTitle(const DialogItem& item) {
    QString title =
        item.control
            ? QString::fromUtf8(reinterpret_cast<const char*>((*item.control)->contrlTitle + 1),
                                (*item.control)->contrlTitle[0])
            : QString::fromStdString(item.text);
    return title.replace(QLatin1Char('&'), QLatin1String("&&"));
}

void ShowTitle(const DialogItem& item, QWidget* widget) {
    if (auto* button = qobject_cast<QAbstractButton*>(widget)) button->setText(ToTitle(item));
}

void ShowValue(const DialogItem& item, QWidget* widget) {
    if (!item.control) return;
    const QSignalBlocker blocker(widget);
    const int value = (*item.control)->contrlValue;
    if (auto* box = qobject_cast<QCheckBox*>(widget)) box->setChecked(value != 0);
    if (auto* popUp = qobject_cast<QComboBox*>(widget))
        popUp->setCurrentIndex(value <= popUp->count() ? value - 1 : -1);
}

void ShowMenu(const DialogItem& item, QWidget* widget) {
    auto* popUp = qobject_cast<QComboBox*>(widget);
    if (!popUp || !item.menu) return;
    const QSignalBlocker blocker(widget);
    popUp->clear();
    for (const MenuEntry& entry : (*item.menu)->entries) {
        const int index = popUp->count();
        if (entry.separator) {
            popUp->insertSeparator(index);
        } else {
            popUp->addItem(QString::fromStdString(entry.text));
            qobject_cast<QStandardItemModel*>(popUp->model())
                ->item(index)
                ->setEnabled((*item.menu)->CanChoose(static_cast<short>(index + 1)));
        }
    }
    ShowValue(item, widget);
}

void ShowText(const DialogItem& item, QWidget* widget) {
    const QString text = QString::fromStdString(item.text);
    auto* edit = qobject_cast<QLineEdit*>(widget);
    if (edit && edit->text() != text) edit->setText(text);
}

void ShowLook(const DialogItem& item, QWidget* widget) {
    if (auto* label = qobject_cast<QLabel*>(widget))
        label->setText(QString::fromStdString(SubstituteParamText(item.text)));
}

void ShowRect(const DialogItem& item, QWidget* widget) {
    widget->setGeometry(item.rect.left, item.rect.top, item.rect.right - item.rect.left,
                        item.rect.bottom - item.rect.top);
}

QWidget* MakeButton(DialogPtr dialog, short number, QWidget* parent, Postings& postings) {
    auto* button = new QPushButton(parent);
    button->setAutoDefault(true); // Return means the button that has the keys, and is seen to
    QObject::connect(button, &QPushButton::clicked, button,
                     [=, &postings] { postings.Hit(dialog, number); });
    return button;
}

QWidget* MakeCheckBox(DialogPtr dialog, short number, QWidget* parent, Postings& postings) {
    auto* box = new WideCheckBox(parent);
    QObject::connect(box, &QCheckBox::clicked, box, [=, &postings] {
        ShowValue(*dialog->Item(number), box); // the module decides whether it is checked
        postings.Hit(dialog, number);
    });
    return box;
}

QWidget* MakePopUp(DialogPtr dialog, short number, QWidget* parent, Postings& postings) {
    auto* popUp = new PopUp(parent);
    QObject::connect(popUp, &QComboBox::activated, popUp, [=, &postings](int index) {
        if (!postings.Entry(dialog, number, static_cast<short>(index + 1)))
            ShowValue(*dialog->Item(number), popUp);
    });
    return popUp;
}

QWidget* MakeEditText(DialogPtr dialog, short number, QWidget* parent, Postings& postings) {
    auto* edit = new QLineEdit(parent);
    QObject::connect(edit, &QLineEdit::textEdited, edit, [=, &postings](const QString& text) {
        postings.Text(dialog, number, text.toStdString());
    });
    return edit;
}

QWidget* MakeStaticText(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    label->setWordWrap(true);
    label->setAttribute(Qt::WA_TransparentForMouseEvents); // the canvas under it takes presses
    return label;
}

// The layouts are made for this one, whatever style the program's other windows have.
QStyle* FixedStyle() {
    static QStyle* const style = QStyleFactory::create(QStringLiteral("Fusion"));
    return style;
}

QWidget* MakeWidget(DialogPtr dialog, short number, QWidget* parent, Postings& postings) {
    const DialogItem& item = *dialog->Item(number);
    switch (item.BaseKind()) {
    case kButtonItem:
        return MakeButton(dialog, number, parent, postings);
    case kCheckBoxItem:
        return MakeCheckBox(dialog, number, parent, postings);
    case kResourceControlItem:
        return MakePopUp(dialog, number, parent, postings);
    case kEditTextItem:
        return MakeEditText(dialog, number, parent, postings);
    case kStaticTextItem:
        return MakeStaticText(parent);
    case kUserItem:
        return item.isGroup ? nullptr : new DrawnItem(parent);
    default:
        return nullptr;
    }
}

} // namespace

QWidget* MakeItemWidget(DialogPtr dialog, short item, QWidget* parent, Postings& postings) {
    QWidget* widget = MakeWidget(dialog, item, parent, postings);
    if (!widget) return nullptr;
    widget->setStyle(FixedStyle());
    if (IsNativeControl(widget)) {
        // The mouse leaves the keys where they are, except for a text to be edited.
        const bool edits = qobject_cast<QLineEdit*>(widget) != nullptr;
        widget->setFocusPolicy(edits ? Qt::StrongFocus : Qt::TabFocus);
        widget->setCursor(edits && dialog->tracksCursor ? Qt::IBeamCursor : Qt::ArrowCursor);
        widget->setMouseTracking(true);
    }
    for (const ItemChange all :
         {ItemChange::rect, ItemChange::title, ItemChange::menu, ItemChange::value,
          ItemChange::text, ItemChange::look, ItemChange::state})
        UpdateItemWidget(dialog, item, widget, all);
    widget->setAccessibleName(AccessibleNameOf(*dialog, item));
    return widget;
}

void UpdateItemWidget(DialogPtr dialog, short number, QWidget* widget, ItemChange change) {
    const DialogItem& item = *dialog->Item(number);
    switch (change) {
    case ItemChange::look:
        return ShowLook(item, widget);
    case ItemChange::state:
        return widget->setEnabled(!item.IsDisabled());
    case ItemChange::value:
        return ShowValue(item, widget);
    case ItemChange::title:
        ShowTitle(item, widget);
        return widget->setAccessibleName(AccessibleNameOf(*dialog, number));
    case ItemChange::text:
        return ShowText(item, widget);
    case ItemChange::menu:
        return ShowMenu(item, widget);
    case ItemChange::rect:
        return ShowRect(item, widget);
    case ItemChange::focus:
        return;
    }
}

bool IsNativeControl(const QWidget* widget) {
    return qobject_cast<const QAbstractButton*>(widget) || qobject_cast<const QComboBox*>(widget) ||
           qobject_cast<const QLineEdit*>(widget);
}

bool OperatesControl(const QWidget* widget, int key) {
    const bool isReturn = key == Qt::Key_Return || key == Qt::Key_Enter;
    if (isReturn) return qobject_cast<const QPushButton*>(widget) != nullptr;
    if (qobject_cast<const QAbstractButton*>(widget)) return key == Qt::Key_Space;
    if (!qobject_cast<const QComboBox*>(widget)) return false;
    constexpr int kPopUpKeys[] = {Qt::Key_Space, Qt::Key_Up,     Qt::Key_Down,     Qt::Key_Home,
                                  Qt::Key_End,   Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_F4};
    return std::find(std::begin(kPopUpKeys), std::end(kPopUpKeys), key) != std::end(kPopUpKeys);
}
