#include "Accessibility.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QComboBox>

#include <algorithm>
#include <limits>

namespace {

/// A label further away than this, in points, belongs to something else.
constexpr int kLabelReach = 40;

QString OwnText(const DialogItem& item) {
    switch (item.BaseKind()) {
    case kButtonItem:
    case kCheckBoxItem:
    case kStaticTextItem:
        return QString::fromStdString(SubstituteParamText(item.text));
    case kResourceControlItem:
        return item.menu ? QString::fromStdString((*item.menu)->title) : QString();
    default:
        return QString();
    }
}

// A text with parameters in it shows a value and names nothing.
bool IsLabel(const DialogItem& item) {
    return item.BaseKind() == kStaticTextItem && !item.text.empty() &&
           item.text.find('^') == std::string::npos;
}

bool Overlap(int start1, int end1, int start2, int end2) {
    return start1 < end2 && start2 < end1;
}

// How far a label's near edge is to the left of an item or above it; the largest number when it is
// elsewhere.
int LabelDistance(const Rect& label, const Rect& item) {
    constexpr int kSlack = 4;
    const bool sameRow = Overlap(label.top, label.bottom, item.top, item.bottom);
    if (sameRow && label.left < item.left) return std::max(0, item.left - label.right);
    const bool sameColumn = Overlap(label.left, label.right, item.left, item.right);
    if (sameColumn && label.bottom <= item.top + kSlack)
        return std::max(0, item.top - label.bottom);
    return std::numeric_limits<int>::max();
}

QString LabelNear(const DialogRecord& dialog, const DialogItem& item) {
    const DialogItem* nearest = nullptr;
    int distance = kLabelReach;
    for (const DialogItem& label : dialog.items) {
        if (!IsLabel(label)) continue;
        const int away = LabelDistance(label.rect, item.rect);
        if (away >= distance) continue;
        nearest = &label;
        distance = away;
    }
    return nearest ? OwnText(*nearest) : QString();
}

/// The toolkit's own would give the chosen entry for a name, and no name.
class PopUpInterface : public QAccessibleWidget {
  public:
    explicit PopUpInterface(QComboBox* theBox)
        : QAccessibleWidget(theBox, QAccessible::ComboBox), box(theBox) {
        addControllingSignal(QStringLiteral("activated(int)"));
    }

    QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Value) return box->currentText();
        if (kind != QAccessible::Name) return QAccessibleWidget::text(kind);
        return box->accessibleName() + QStringLiteral(": ") + box->currentText();
    }
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.hasPopup = true;
        state.expandable = true;
        return state;
    }
    QStringList actionNames() const override {
        return QStringList(showMenuAction()) + QAccessibleWidget::actionNames();
    }
    void doAction(const QString& name) override {
        if (name != showMenuAction()) return QAccessibleWidget::doAction(name);
        if (box->isEnabled()) box->showPopup();
    }

  private:
    QComboBox* box;
};

QAccessibleInterface* MakeInterface(const QString&, QObject* object) {
    if (auto* drawn = dynamic_cast<DrawnItem*>(object))
        return new QAccessibleWidget(drawn, QAccessible::Graphic);
    if (auto* box = qobject_cast<QComboBox*>(object); box && !box->accessibleName().isEmpty())
        return new PopUpInterface(box);
    return nullptr;
}

} // namespace

QString AccessibleNameOf(const DialogRecord& dialog, short number) {
    const DialogItem& item = dialog.items[static_cast<std::size_t>(number) - 1];
    QString name = OwnText(item);
    if (name.isEmpty()) name = LabelNear(dialog, item);
    if (name.endsWith(QLatin1Char(':'))) name.chop(1);
    return name.isEmpty() ? QStringLiteral("Item %1").arg(number) : name;
}

DrawnItem::DrawnItem(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
}

void InstallItemAccessibility() {
    QAccessible::installFactory(MakeInterface);
}
