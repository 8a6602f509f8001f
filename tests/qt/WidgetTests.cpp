// Native widgets: in step with the records, known by name, and usable without a mouse.
#include "WindowFixture.h"

#include <QAbstractItemModel>
#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {

const std::uint8_t* Pascal(const char* text) {
    static Str255 buffer;
    buffer[0] = static_cast<std::uint8_t>(std::strlen(text));
    std::copy(text, text + buffer[0], buffer + 1);
    return buffer;
}

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
    SetControlTitle(ControlOf(kTestCancel), Pascal("Cut & try"));
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
    InsertMenuItem(menu, Pascal("Thirty-two"), 5);
    DisableItem(menu, 1);
    SetControlMaximum(ControlOf(kTestColours), 6);
    SetControlValue(ControlOf(kTestColours), 6);
    const auto* popUp = As<QComboBox>(kTestColours);
    EXPECT_EQ(popUp->currentText(), "Thirty-two");
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
    Press(Global(WidgetOf(kTestAutomatic)->geometry().topRight() + QPoint(-2, 2))); // past its text
    EXPECT_EQ(NextHit(), kTestAutomatic);
    EXPECT_FALSE(As<QCheckBox>(kTestAutomatic)->isChecked());
    EXPECT_EQ(NextHit(), -1);
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
    static int keysSeen;
    keysSeen = 0;
    const ModalFilterProc filter = [](DialogPtr, EventRecord* event, short*) -> Boolean {
        if (event->what == keyDown) ++keysSeen;
        return event->what == keyDown; // takes every key that it sees
    };
    const struct {
        short item;
        int key;
        int wanted;
    } cases[] = {{kTestAutomatic, Qt::Key_Space, kTestAutomatic},
                 {kTestCancel, Qt::Key_Space, kTestCancel},
                 {kTestColours, Qt::Key_Down, kTestColours}};
    for (const auto& c : cases) {
        WidgetOf(c.item)->setFocus();
        Stroke(c.key);
        EXPECT_EQ(NextHit(filter), c.wanted) << "item " << c.item;
    }
    EXPECT_EQ(keysSeen, 0);
    EXPECT_EQ(GetPopUpMenuValue(dialog, kTestColours), 2);
}

TEST_F(Widgets, LeaveReturnAndEscapeToTheDialog) {
    Show();
    const struct {
        int key;
        short hit;
    } cases[] = {
        {Qt::Key_Return, kTestOK}, {Qt::Key_Enter, kTestOK}, {Qt::Key_Escape, kTestCancel}};
    for (const short focused : {kTestCancel, kTestAutomatic, kTestColours, kTestNumber})
        for (const auto& c : cases) {
            WidgetOf(focused)->setFocus();
            Stroke(c.key);
            EXPECT_EQ(NextHit(), c.hit) << "item " << focused << ", key " << c.key;
        }
    WidgetOf(kTestNumber)->setFocus();
    hands->Key(Qt::Key_Control, {}, true);
    Stroke(Qt::Key_Period, QStringLiteral("."));
    hands->Key(Qt::Key_Control, {}, false);
    EXPECT_EQ(NextHit(), kTestCancel);
}

TEST_F(Widgets, TakeClosingTheWindowForCancel) {
    Show();
    EXPECT_EQ(Window()->windowTitle(), "Test dialog");
    Window()->close();
    EXPECT_TRUE(Window()->isVisible()) << "the module closes the dialog";
    EXPECT_EQ(NextHit(), kTestCancel);
}

TEST_F(Widgets, AndDrawnItemsAreListedByRoleAndName) {
    Show();
    QAccessibleInterface* window = QAccessible::queryAccessibleInterface(Canvas());
    std::vector<std::pair<QAccessible::Role, std::string>> seen;
    for (int i = 0; i < window->childCount(); ++i) {
        const QAccessibleInterface* child = window->child(i);
        seen.emplace_back(child->role(), child->text(QAccessible::Name).toStdString());
    }
    using Role = QAccessible::Role;
    EXPECT_EQ(seen, (std::vector<std::pair<Role, std::string>>{
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
