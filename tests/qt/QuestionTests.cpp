// File dialogs, colour picker and alerts, and what is said where there is no display.
#include "Problem.h"
#include "TemporaryFolder.h"
#include "WindowFixture.h"

#include <QColorDialog>
#include <QFileDialog>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>

#include <unistd.h>

namespace {

bool AcceptLater(QWidget* dialog) {
    // Not from here: a question that follows would hold this answer up, and with it all others.
    return QMetaObject::invokeMethod(dialog, "accept", Qt::QueuedConnection);
}

Boolean HideText(ParamBlockRec* file) {
    const std::string name(file->ioNamePtr + 1, file->ioNamePtr + 1 + file->ioNamePtr[0]);
    return name.size() > 4 && name.substr(name.size() - 4) == ".txt";
}

class Questions : public testing::Test {
  protected:
    Questions() : display(gif89::OpenDisplay()) {
        SetEventSource(display.events);
        SetStandardFileResponder(display.files);
        folder.Write("one.pal", "RIFF");
        folder.Write("two.txt", "two");
        std::filesystem::create_directory(folder.Path("inner"));
    }
    ~Questions() override {
        SetStandardFileResponder(nullptr);
        SetEventSource(nullptr);
    }
    std::string PathOf(const StandardFileReply& reply) {
        std::string path;
        EXPECT_EQ(FSSpecToPath(&reply.sfFile, &path), noErr);
        return std::filesystem::canonical(std::filesystem::path(path).parent_path()) /
               std::filesystem::path(path).filename();
    }
    /// The names on show once they have come; the dialog reads folders in the background.
    static QStringList Shown(QWidget* dialog) {
        const auto* list = dialog->findChild<QListView*>(QStringLiteral("listView"));
        QStringList names;
        for (int i = 0; i < list->model()->rowCount(list->rootIndex()); ++i)
            names << list->model()->index(i, 0, list->rootIndex()).data().toString();
        return names;
    }
    Answers::Step GoTo(const std::string& path) {
        return [path](QWidget* dialog) {
            auto* files = qobject_cast<QFileDialog*>(dialog);
            if (files) files->setDirectory(QString::fromStdString(path));
            return files != nullptr;
        };
    }
    Answers::Step Pick(const std::string& path) {
        return [path](QWidget* dialog) {
            auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
            if (name) name->setText(QString::fromStdString(path));
            return name && AcceptLater(dialog);
        };
    }

    DisplayParts display;
    TemporaryFolder folder;
};

TEST_F(Questions, OpenOffersFoldersAndWhatTheFilterLeaves) {
    QStringList shown;
    QString reason;
    Answers answers({GoTo(folder.Path()),
                     [&](QWidget* dialog) {
                         shown = Shown(dialog);
                         return shown.contains(QStringLiteral("one.pal"));
                     },
                     Pick(folder.Path("two.txt")),
                     [&](QWidget* dialog) {
                         const auto* box = qobject_cast<QMessageBox*>(dialog);
                         if (box) reason = box->text();
                         return box && AcceptLater(dialog);
                     },
                     Pick(folder.Path("one.pal"))});
    StandardFileReply reply;
    StandardGetFile(HideText, -1, nullptr, &reply);
    EXPECT_EQ(shown, (QStringList{"inner", "one.pal"})) << shown.join(" ").toStdString();
    EXPECT_EQ(reason, "\"two.txt\" is no file of the kind that is asked for here.");
    EXPECT_TRUE(reply.sfGood);
    EXPECT_EQ(reply.sfType, FourCC("PAL "));
    EXPECT_EQ(PathOf(reply), std::filesystem::canonical(folder.Path()) / "one.pal");
}

TEST_F(Questions, SaveAsksBeforeItReplaces) {
    const auto say = [](QMessageBox::StandardButton button) {
        return [button](QWidget* dialog) {
            auto* box = qobject_cast<QMessageBox*>(dialog);
            if (box) box->button(button)->animateClick();
            return box != nullptr;
        };
    };
    const std::string existing = folder.Path("one.pal");
    Answers answers({GoTo(folder.Path()), Pick(existing), say(QMessageBox::No), Pick(existing),
                     say(QMessageBox::Yes), GoTo(folder.Path()),
                     [](QWidget* dialog) { return AcceptLater(dialog); },
                     [](QWidget* dialog) { return dialog->close(); }});
    const auto put = [] {
        StandardFileReply reply;
        StandardPutFile(reinterpret_cast<ConstStr255Param>("\010Save as:"),
                        reinterpret_cast<ConstStr255Param>("\007new.gif"), &reply);
        return reply;
    };
    const StandardFileReply replaced = put();
    EXPECT_TRUE(replaced.sfGood && replaced.sfReplacing);
    EXPECT_EQ(PathOf(replaced), std::filesystem::canonical(folder.Path()) / "one.pal");
    const StandardFileReply fresh = put();
    EXPECT_TRUE(fresh.sfGood && !fresh.sfReplacing);
    EXPECT_EQ(PathOf(fresh), std::filesystem::canonical(folder.Path()) / "new.gif");
    EXPECT_FALSE(put().sfGood);
}

TEST_F(Questions, ColoursComeBackInFullWidth) {
    Answers answers({[](QWidget* dialog) {
                         auto* colors = qobject_cast<QColorDialog*>(dialog);
                         EXPECT_EQ(colors->currentColor(), QColor(0xC0, 0x12, 0));
                         colors->setCurrentColor(QColor(1, 128, 255));
                         return AcceptLater(dialog);
                     },
                     [](QWidget* dialog) { return dialog->close(); }});
    const RGBColor start = {0xC0C0, 0x1234, 0x00FF};
    RGBColor picked;
    ASSERT_TRUE(GetColor({}, nullptr, &start, &picked));
    EXPECT_EQ(picked.red, 0x0101);
    EXPECT_EQ(picked.green, 0x8080);
    EXPECT_EQ(picked.blue, 0xFFFF);
    EXPECT_FALSE(GetColor({}, nullptr, &start, &picked));
}

TEST_F(Questions, AlertsShowTheirTextsAsTheyAre) {
    Answers answers({[&](QWidget* dialog) {
        const auto* box = qobject_cast<QMessageBox*>(dialog);
        EXPECT_EQ(box->text(), "No <b>palette</b> there.");
        EXPECT_EQ(box->textFormat(), Qt::PlainText);
        return AcceptLater(dialog);
    }});
    display.events->Alert(EventSource::AlertKind::stop, "No <b>palette</b> there.");
}

TEST(Display, ThatCannotBeHadIsSaidInOneSentence) {
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // a process of its own, no toolkit started
    const auto open = [](const char* displayName) {
        unsetenv("QT_QPA_PLATFORM");
        setenv("DISPLAY", displayName, 1);
        try {
            gif89::OpenDisplay();
        } catch (const gif89::Problem& problem) {
            std::fprintf(stderr, "%s\n", problem.what());
            _exit(problem.Code());
        }
        _exit(0);
    };
    const char* sentence = "^no window can be opened: [^\n]*\n$";
    EXPECT_EXIT(open(""), testing::ExitedWithCode(gif89::kFailed), sentence);
    EXPECT_EXIT(open(":4711"), testing::ExitedWithCode(gif89::kFailed), sentence);
}

} // namespace
