// Native widgets: in step with the records, known by name, and usable without a mouse.
#include "ControlManager.h"
#include "EventManager.h"
#include "MenuManager.h"
#include "PascalStrings.h"
#include "WindowFixture.h"

#include <QAbstractItemModel>
#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

namespace {

struct Pascal {
    explicit Pascal(const char* source) { ToPascal(source, text); }
    Str255 text;
};

class Widgets : public WindowTest {
  protected:
    ControlHandle ControlOf(short item) { return dialog->Item(item)->control; }
    void SetDisabledBit(short item, bool disabled) {
        short kind;
        Handle handle;
        Rect rect;
        GetDialogItem(dialog, item, &kind, &handle, &rect);
        kind = static_cast<short>(disabled ? kind | kItemDisabled : kind & ~kItemDisabled);
        SetDialogItem(dialog, item, kind, handle, &rect);
    }
};

TEST_F(Widgets, AreDisabledByTheKindBitBeforeAndAfterShowing) {
    SetDisabledBit(kTestColours, true);
    Show();
    EXPECT_FALSE(WidgetOf(kTestColours)->isEnabled());
    EXPECT_FALSE(WidgetOf(kTestUnavailable)->isEnabled());
    for (const short item : {kTestOK, kTestAutomatic, kTestColours, kTestNumber, kTestLabel}) {
        SetDisabledBit(item, true);
        EXPECT_FALSE(WidgetOf(item)->isEnabled()) << "item " << item;
        SetDisabledBit(item, false);
        EXPECT_TRUE(WidgetOf(item)->isEnabled()) << "item " << item;
    }
}

TEST_F(Widgets, ShowTitlesValuesTextsAndMenus) {
    Show();
    SetControlTitle(ControlOf(kTestCancel), Pascal("Cut & try").text);
    EXPECT_EQ(As<QPushButton>(kTestCancel)->text(), "Cut && try"); // a single one marks a key
    EXPECT_EQ(WidgetOf(kTestCancel)->accessibleName(), "Cut & try");
    SetCheckBoxState(dialog, kTestAutomatic, true);
    EXPECT_TRUE(As<QCheckBox>(kTestAutomatic)->isChecked());
    StuffNumber(dialog, kTestNumber, 99);
    EXPECT_EQ(As<QLineEdit>(kTestNumber)->text(), "99");
    InvalItem(dialog, kTestScale);
    DrawInvalidItems();
    EXPECT_EQ(As<QLabel>(kTestScale)->text(), "2:1");

    const MenuHandle menu = dialog->Item(kTestColours)->menu;
    InsertMenuItem(menu, Pascal("Thirty-two").text, 5);
    DisableItem(menu, 1);
    SetControlMaximum(ControlOf(kTestColours), 6);
    SetControlValue(ControlOf(kTestColours), 6);
    const auto* popUp = As<QComboBox>(kTestColours);
    EXPECT_EQ(popUp->currentText(), "Thirty-two");
    SetControlValue(ControlOf(kTestColours), 0);
    EXPECT_EQ(popUp->currentIndex(), -1);
    QStringList entries;
    for (int i = 0; i < popUp->count(); ++i) {
        const bool enabled = popUp->model()->flags(popUp->model()->index(i, 0)) & Qt::ItemIsEnabled;
        entries << (enabled ? "" : "off ") + popUp->itemText(i);
    }
    EXPECT_EQ(entries,
              (QStringList{"off Two", "Four", "off ", "off Eight", "Sixteen", "Thirty-two"}))
        << entries.join("|").toStdString();
}

TEST_F(Widgets, OnlyReportThatACheckBoxWasPressed) {
    Show();
    const QPoint pastItsText =
        Global(WidgetOf(kTestAutomatic)->geometry().topRight() + QPoint(-2, 2));
    EXPECT_EQ(HitAfter([&] { Press(pastItsText); }), kTestAutomatic);
    EXPECT_EQ(seen, std::vector<std::int16_t>{mouseDown});
    EXPECT_FALSE(As<QCheckBox>(kTestAutomatic)->isChecked());
    EXPECT_EQ(HitAfter([] {}), -1);
    // The module is shown a press on a disabled one, and once.
    EXPECT_EQ(HitAfter([&] { Press(MiddleOf(kTestUnavailable)); }), -1);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), mouseDown), 1);
}

TEST_F(Widgets, GoByItemOrderWithTab) {
    Show();
    std::vector<std::string> names;
    for (int i = 0; i < 7; ++i) {
        names.push_back(QApplication::focusWidget()->accessibleName().toStdString());
        Stroke(Qt::Key_Tab);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"Number", "Stay open", "OK", "Cancel", "Automatic",
                                               "Colours", "Number"}));
}

TEST_F(Widgets, AreUsedWithKeysThatTheModuleDoesNotSee) {
    Show();
    const ModalFilterProc takeKeys = [](DialogPtr, EventRecord* event, short*) -> Boolean {
        return event->what == keyDown;
    };
    const struct {
        short item;
        int key;
    } cases[] = {{kTestAutomatic, Qt::Key_Space},
                 {kTestCancel, Qt::Key_Space},
                 {kTestColours, Qt::Key_Down}};
    for (const auto& c : cases) {
        WidgetOf(c.item)->setFocus();
        EXPECT_EQ(HitAfter([&] { Stroke(c.key); }, takeKeys), c.item);
        EXPECT_EQ(seen.size(), 0u) << "item " << c.item;
    }
    EXPECT_EQ(GetPopUpMenuValue(dialog, kTestColours), 2);
    // What is no business of the widget is offered, once, although it travels up to the window.
    WidgetOf(kTestAutomatic)->setFocus();
    EXPECT_EQ(HitAfter([&] { Stroke(Qt::Key_F5); }), -1);
    EXPECT_EQ(seen, std::vector<std::int16_t>{keyDown});
}

TEST_F(Widgets, LeaveReturnAndEscapeToTheDialogUnlessTheyAreButtonsOrLists) {
    Show();
    const struct {
        int key;
        short hit;
    } cases[] = {
        {Qt::Key_Return, kTestOK}, {Qt::Key_Enter, kTestOK}, {Qt::Key_Escape, kTestCancel}};
    for (const short focused : {kTestCancel, kTestAutomatic, kTestColours, kTestNumber})
        for (const auto& c : cases) {
            WidgetOf(focused)->setFocus();
            const short want = focused == kTestCancel ? focused : c.hit;
            EXPECT_EQ(HitAfter([&] { Stroke(c.key); }), want)
                << "item " << focused << ", key " << c.key;
        }
    WidgetOf(kTestNumber)->setFocus();
    hands->Key(Qt::Key_Control, {}, true);
    EXPECT_EQ(HitAfter([&] { Stroke(Qt::Key_Period, QStringLiteral(".")); }), kTestCancel);
    hands->Key(Qt::Key_Control, {}, false);
    // Some displays send the keys of an open list to the dialog's window.
    const std::pair<Qt::Key, short> ends[] = {{Qt::Key_Return, kTestColours}, {Qt::Key_Escape, -1}};
    for (const auto& [key, hit] : ends) {
        Press(MiddleOf(kTestColours));
        Settle();
        ASSERT_NE(QApplication::activePopupWidget(), nullptr);
        const auto stroke = [&, key = key] { QTest::keyClick(Window()->windowHandle(), key); };
        EXPECT_EQ(HitAfter(stroke), hit) << "key " << key;
        EXPECT_EQ(HitAfter([] {}), -1) << "key " << key;
        EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    }
}

TEST_F(Widgets, TakeClosingTheWindowForCancel) {
    Show();
    const auto optionIsDown = [] {
        KeyMap keys;
        GetKeys(keys);
        return (keys[kKeyOption >> 3] >> (kKeyOption & 7) & 1) != 0;
    };
    hands->Key(Qt::Key_Alt, {}, true);
    Settle();
    EXPECT_TRUE(optionIsDown());
    EXPECT_EQ(Window()->windowTitle(), "Test dialog");
    QDialog* window = Window();
    EXPECT_EQ(HitAfter([&] { window->close(); }), kTestCancel);
    EXPECT_TRUE(window->isVisible()) << "the module closes the dialog";
    EXPECT_FALSE(optionIsDown()) << "it was held to close, and not to reset";
    hands->Key(Qt::Key_Alt, {}, false);
    Settle();
    hands->Key(Qt::Key_Alt, {}, true);
    Settle();
    EXPECT_TRUE(optionIsDown());
    hands->Key(Qt::Key_Alt, {}, false);
}

TEST_F(Widgets, AndDrawnItemsAreListedByRoleAndName) {
    Show();
    QAccessibleInterface* window = QAccessible::queryAccessibleInterface(Canvas());
    std::vector<std::pair<QAccessible::Role, std::string>> listed;
    for (int i = 0; i < window->childCount(); ++i) {
        const QAccessibleInterface* child = window->child(i);
        listed.emplace_back(child->role(), child->text(QAccessible::Name).toStdString());
    }
    using Role = QAccessible::Role;
    EXPECT_EQ(listed, (std::vector<std::pair<Role, std::string>>{
                          {Role::Button, "OK"},
                          {Role::Button, "Cancel"},
                          {Role::CheckBox, "Automatic"},
                          {Role::ComboBox, "Colours: Two"},
                          {Role::EditableText, "Number"},
                          {Role::StaticText, "2:1"},
                          {Role::Graphic, "Item 7"},
                          {Role::Graphic, "Item 8"},
                          {Role::Graphic, "Item 9"},
                          {Role::Graphic, "Item 10"},
                          {Role::StaticText, "Number"},
                          {Role::CheckBox, "Stay open"},
                          {Role::CheckBox, "Unavailable"},
                      }));
}

} // namespace
