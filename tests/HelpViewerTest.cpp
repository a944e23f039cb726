#include "app/FieldEditors.h"
#include "app/MainFrm.h"
#include "app/Ribbon.h"
#include "dialogs/WidgetPrompts.h"
#include "support/ChmArchive.h"
#include "support/HelpBrowser.h"
#include "support/HelpContents.h"
#include "support/HelpRouter.h"
#include "support/HelpWindow.h"
#include "tests/DialogTesting.h"
#include "tools/SilentPrompts.h"

#include <QDialog>
#include <QLineEdit>
#include <QToolButton>
#include <QTreeWidget>

#include <random>

using namespace Corvadine;
using namespace Corvadine::Testing;
using ::testing::EndsWith;

namespace {

const QString HelpFile = QStringLiteral(CORVADINE_HELP_FILE);

class HelpViewerTest : public TFolderTest {
protected:
    // The help file with some bytes changed.
    QString Damaged(const QByteArray& bytes) const
    {
        PutFile(Path("damaged.chm"), bytes);
        return Path("damaged.chm");
    }

    const QByteArray FBytes = FileBytes(HelpFile);
};

QString CurrentItem(const THelpWindow& window)
{
    const QTreeWidgetItem* item = window.ContentsTree->currentItem();
    return item != nullptr ? item->text(0) : QString();
}

// The help that the program shows.
THelpWindow* ShownHelp()
{
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* window = qobject_cast<THelpWindow*>(widget); window != nullptr && window->isVisible())
            return window;
    return nullptr;
}

// What is read of a damaged file does not matter, only that all of it can be asked for.
void ReadEverything(const QString& path)
{
    try {
        const TChmArchive archive(path);
        archive.Read(archive.HomePage());
        for (const quint32 topic : archive.TopicNumbers())
            archive.Read(archive.TopicPage(topic));
        for (const THelpEntry& entry : ParseHelpContents(archive.Read(archive.ContentsFile()).value_or("")))
            archive.Read(entry.Page.section(u'#', 0, 0));
        archive.Read("/filters.png");
    } catch (const TError&) {
    }
}

} // namespace

TEST_F(HelpViewerTest, DamagedFilesNeitherCrashNorSpeak)
{
    std::mt19937 engine(1);
    const auto random = [&](qsizetype below) { return static_cast<qsizetype>(engine()) % below; };
    // Most damage goes to the first bytes: the numbers that everything else is found by.
    constexpr int Rounds = 120;
    for (int round = 0; round < Rounds; ++round) {
        QByteArray bytes = FBytes;
        const qsizetype end = round % 4 == 0 ? bytes.size() : 9000;
        for (qsizetype count = 1 + random(4); count > 0; --count)
            bytes[random(end)] = static_cast<char>(random(256));
        if (round % 8 == 0)
            bytes.truncate(random(bytes.size()));
        ReadEverything(Damaged(bytes));
    }
    const auto errorOf = [](const QString& path) { return ErrorOf([&] { TChmArchive archive(path); }); };
    for (const qsizetype size : { 0LL, 4LL, 96LL, 5000LL, FBytes.size() - 1 })
        EXPECT_THAT(errorOf(Damaged(FBytes.left(size))), EndsWith(": it is damaged")) << size;
    EXPECT_THAT(errorOf(Path("none.chm")), EndsWith(": the file does not exist"));

    // And nothing is shown, or said, or lost.
    THelpWindow window;
    window.ShowTopic(Damaged(FBytes.left(5000)), 90);
    window.ShowContents(Path("none.chm"));
    window.ShowTopic(HelpFile, 12345);
    EXPECT_FALSE(window.isVisible());
    window.ShowTopic(HelpFile, 90);
    window.ShowTopic(Damaged(FBytes.left(5000)), 2007);
    EXPECT_EQ(window.Browser->Page(), "/window.html");
}

TEST_F(HelpViewerTest, ContentsOfAnyShapeAreRead)
{
    const auto entry = [](const char* name) {
        return QByteArray("<li><OBJECT type=\"text/sitemap\"><param name=\"Name\" value=\"") + name
            + "\"><param name=\"Local\" value=\"a.html#b\"></OBJECT>";
    };
    EXPECT_EQ(ParseHelpContents("<ul>" + entry("A &amp;lt; &quot;B&quot;") + "<UL><UL>" + entry("C")
                  + "</UL></UL></UL></UL>" + entry("D") + "<ul><object type=\"text/sitemap\"><param name="),
        std::vector<THelpEntry>(
            { { "A &lt; \"B\"", "/a.html#b", 0 }, { "C", "/a.html#b", 1 }, { "D", "/a.html#b", 0 } }));
    QByteArray deep;
    for (int i = 0; i < 20000; ++i)
        deep += "<ul>" + entry("x");
    EXPECT_LT(ParseHelpContents(deep).back().Level, 20);
}

TEST_F(HelpViewerTest, WalksThroughThePages)
{
    THelpWindow window;
    window.ShowTopic(HelpFile, 90);
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(CurrentItem(window), "The main window");
    window.ShowContents(HelpFile);
    EXPECT_EQ(window.Browser->Page(), "/start.html");

    // By the contents: what a key does in the tree, and what the page does to it.
    QApplication::setActiveWindow(&window);
    window.ContentsTree->setFocus();
    Press(Qt::Key_End);
    EXPECT_EQ(window.Browser->Page(), "/trouble.html");
    emit window.Browser->anchorClicked(QUrl("filters.html"));
    EXPECT_EQ(CurrentItem(window), "The twelve filters");
    emit window.Browser->anchorClicked(QUrl("sizes.html#ipad"));
    EXPECT_EQ(CurrentItem(window), "All images and their sizes");

    QTest::keyClick(window.Browser, Qt::Key_Left, Qt::AltModifier);
    EXPECT_EQ(window.Browser->Page(), "/filters.html");
    QTest::keyClick(window.Browser, Qt::Key_Home, Qt::AltModifier);
    EXPECT_EQ(window.Browser->Page(), "/start.html");

    QTest::keyClick(window.Browser, Qt::Key_F, Qt::ControlModifier);
    EXPECT_TRUE(window.FindEdit->hasFocus());
    QTest::keyClicks(window.FindEdit, "PLATFORMS");
    Press(Qt::Key_Return);
    EXPECT_EQ(window.Browser->textCursor().selectedText(), "platforms");
    const int first = window.Browser->textCursor().position();
    Press(Qt::Key_F3);
    EXPECT_EQ(window.Browser->textCursor().position(), first) << "starts over";

    Press(Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}

TEST_F(HelpViewerTest, PagesGetNothingFromOutsideTheArchive)
{
    THelpWindow window;
    window.ShowTopic(HelpFile, 90);
    THelpBrowser& browser = *window.Browser;
    QList<QUrl> opened;
    browser.SetLinkOpener([&](const QUrl& url) { opened.append(url); });

    PutFile(Path("secret.html"), "<p>secret</p>");
    QImage red(8, 8, QImage::Format_RGB32);
    red.fill(Qt::red);
    ASSERT_TRUE(red.save(Path("secret.png")));
    const QString file = QUrl::fromLocalFile(Path("secret")).toString();
    for (const QString& name : { file, Path("secret"), "../../../.." + Path("secret"), "qrc" + Path("secret"),
             "help://host" + Path("secret") }) {
        EXPECT_EQ(browser.loadResource(QTextDocument::HtmlResource, name + ".html").toByteArray(), "")
            << name.toStdString();
        const auto picture =
            browser.loadResource(QTextDocument::ImageResource, name + ".png").value<QImage>();
        EXPECT_EQ(picture.size(), QSize(1, 1)) << name.toStdString();
        emit browser.anchorClicked(name + ".html");
        EXPECT_EQ(browser.Page(), "/window.html");
    }
    // What is drawn in the place of a picture, too: a text document likes to look for files by itself.
    browser.setHtml("<img src=\"" + Path("secret.png") + "\"><img src=\"" + file + ".png\">");
    const QImage drawn = browser.grab().toImage();
    for (int y = 0; y < drawn.height(); ++y)
        for (int x = 0; x < drawn.width(); ++x)
            ASSERT_NE(drawn.pixel(x, y), red.pixel(0, 0));

    EXPECT_EQ(opened, QList<QUrl>());
    for (const char* link : { "https://example.com/", "http://example.com/", "mailto:a@example.com",
             "javascript:alert(1)", "ftp://example.com/", "ms-its:x.chm::/y.html", "file:///etc/passwd" })
        emit browser.anchorClicked(QUrl(link));
    EXPECT_EQ(opened.size(), 3) << "the web and mail, after a click";
}

TEST_F(HelpViewerTest, F1OpensTheWindowsTopicAndTheButtonTheContents)
{
    TSilentPrompts prompts;
    auto form = std::make_unique<TMainForm>(Path(""), prompts);
    form->StartUp();
    form->show();
    QApplication::setActiveWindow(form.get());
    const auto pressKey = [&] {
        LetIdle();
        QTest::keyClick(form->Controls().cb2xWidth, Qt::Key_F1);
    };
    const auto pressButton = [&] {
        for (QToolButton* button : form->Controls().dxRibbon1->findChildren<QToolButton*>())
            if (button->defaultAction() != nullptr && button->defaultAction()->text() == "&Help")
                QTest::mouseClick(button, Qt::LeftButton);
    };
    EXPECT_EQ(form->State().HelpRouter->HelpFile(), Path("") + "/Corvadine.chm");
    pressKey();
    pressButton();
    EXPECT_EQ(ShownHelp(), nullptr) << "there is no help file";

    ASSERT_TRUE(QFile::copy(HelpFile, Path("Corvadine.chm")));
    form->State().HelpRouter->HelpCommand(4, 0);
    form->State().HelpRouter->HelpContext(-1);
    EXPECT_EQ(ShownHelp(), nullptr) << "neither a topic nor the contents";
    pressKey();
    ASSERT_NE(ShownHelp(), nullptr);
    EXPECT_EQ(ShownHelp()->Browser->Page(), "/window.html");
    pressButton();
    EXPECT_EQ(ShownHelp()->Browser->Page(), "/start.html");
    form.reset();
    EXPECT_EQ(ShownHelp(), nullptr) << "closed with the program's window";
}

TEST_F(HelpViewerTest, DialogsAskForTheirTopicsAndLeaveTheHelpUsable)
{
    QWidget window;
    window.show();
    THelpWindow help;
    QList<int> topics;
    TWidgetPrompts prompts;
    prompts.SetWindow(&window);
    prompts.SetHelp([&](int topic) {
        topics.append(topic);
        help.ShowTopic(HelpFile, static_cast<quint32>(topic));
    });
    InDialog<QDialog>([](QDialog& dialog) {
        QTest::keyClick(&dialog, Qt::Key_F1);
        dialog.close();
    });
    prompts.ChooseProjectFile();
    EXPECT_EQ(help.Browser->Page(), "/add-project.html");
    InDialog<QDialog>([&](QDialog& dialog) {
        QTest::keyClick(dialog.focusWidget(), Qt::Key_F1); // the list
        dialog.setFocus();
        QTest::keyClick(&dialog, Qt::Key_F1);
        QTest::keyClick(help.windowHandle(), Qt::Key_Home, Qt::AltModifier);
        EXPECT_EQ(help.Browser->Page(), "/start.html") << "not blocked";
        dialog.close();
    });
    prompts.ChooseImage({});
    EXPECT_EQ(topics.first(), 2006);
    EXPECT_TRUE(topics.contains(2010));
}
