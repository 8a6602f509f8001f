#include "MessageBar.h"

#include <QAccessible>
#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QStyle>
#include <QToolButton>

namespace gif89 {
namespace {

struct Look {
    QStyle::StandardPixmap icon;
    QRgb light, dark; ///< background in a light and in a dark window
};
constexpr Look kLooks[] = {{QStyle::SP_MessageBoxInformation, 0xffdcebfa, 0xff24425e},
                           {QStyle::SP_MessageBoxWarning, 0xfffdf0c8, 0xff5c4a14},
                           {QStyle::SP_MessageBoxCritical, 0xfffbdcdc, 0xff642626}};

} // namespace

MessageBar::MessageBar(QWidget* parent)
    : QFrame(parent), icon(new QLabel), text(new QLabel), closer(new QToolButton) {
    setAutoFillBackground(true);
    setAccessibleName(tr("Message"));
    text->setTextFormat(Qt::PlainText);
    text->setWordWrap(true);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    closer->setAutoRaise(true);
    closer->setText(QStringLiteral("✕"));
    closer->setToolTip(tr("Close the message (Escape)"));
    closer->setAccessibleName(tr("Close the message"));
    connect(closer, &QToolButton::clicked, this, &QWidget::hide);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(10, 6, 6, 6);
    row->addWidget(icon);
    row->addWidget(text, 1);
    row->addWidget(closer);
    hide();
}

void MessageBar::Say(Kind newKind, const QString& sentence) {
    kind = newKind;
    text->setText(sentence);
    setAccessibleDescription(sentence);
    const int side = style()->pixelMetric(QStyle::PM_SmallIconSize);
    icon->setPixmap(style()
                        ->standardIcon(kLooks[static_cast<int>(kind)].icon)
                        .pixmap(QSize(side, side), devicePixelRatioF()));
    Color();
    show();
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

QString MessageBar::Text() const {
    return isHidden() ? QString() : text->text();
}

// Called from changeEvent, too, which setting the palette calls: only a change goes on.
void MessageBar::Color() {
    const QPalette around = parentWidget() ? parentWidget()->palette() : palette();
    const bool dark = around.color(QPalette::Window).lightness() < 128;
    const Look& look = kLooks[static_cast<int>(kind)];
    const QColor background = QColor::fromRgb(dark ? look.dark : look.light);
    if (palette().color(QPalette::Window) == background) return;
    QPalette colors = around;
    colors.setColor(QPalette::Window, background);
    for (const auto role : {QPalette::WindowText, QPalette::ButtonText, QPalette::Text})
        colors.setColor(role, dark ? Qt::white : Qt::black);
    setPalette(colors);
}

void MessageBar::changeEvent(QEvent* event) {
    QFrame::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !isHidden()) Color();
}

void MessageBar::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) return hide();
    QFrame::keyPressEvent(event);
}

} // namespace gif89
