#include "dialogs/WidgetPrompts.h"
#include "support/help/ChmArchive.h"
#include "support/help/HelpBrowser.h"
#include "support/help/HelpContents.h"
#include "support/help/HelpWindow.h"
#include "tests/MainFormTesting.h"

#include <QDesktopServices>
#include <QDialog>
#include <QLineEdit>
#include <QTreeWidget>

#include <random>

using namespace Corvadine;
using namespace Corvadine::Testing;
using ::testing::EndsWith;

namespace {

const QString HelpFile = QStringLiteral(CORVADINE_HELP_FILE);

class HelpViewerTest : public TFolderTest { };

// Returns the help window, or null if the help window is not visible.
THelpWindow* ShownHelp()
{
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (auto* window = qobject_cast<THelpWindow*>(widget); window != nullptr && window->isVisible())
            return window;
    return nullptr;
}

} // namespace

TEST_F(HelpViewerTest, DamagedFilesDoNotCrashAndGiveNoMessage)
{
    const QByteArray whole = FileBytes(HelpFile);
    const auto damaged = [path = Path("damaged.chm")](const QByteArray& bytes) {
        PutFile(path, bytes);
        return path;
    };
    std::mt19937 engine(1);
    const auto random = [&](qsizetype below) { return static_cast<qsizetype>(engine()) % below; };
    // Most of the damage is at the start, because the numbers there tell where everything else is.
    constexpr int Rounds = 120;
    for (int round = 0; round < Rounds; ++round) {
        QByteArray bytes = whole;
        const qsizetype end = round % 4 == 0 ? bytes.size() : 9000;
        for (qsizetype count = 1 + random(4); count > 0; --count)
            bytes[random(end)] = static_cast<char>(random(256));
        if (round % 8 == 0)
            bytes.truncate(random(bytes.size()));
        try { // reading must not crash; the sanitizers find other faults
            const TChmArchive archive(damaged(bytes));
            archive.Read(archive.HomePage());
            archive.Read(archive.TopicPage(90));
            for (const THelpEntry& entry :
                ParseHelpContents(archive.Read(archive.ContentsFile()).value_or("")))
                archive.Read(entry.Page.section(u'#', 0, 0));
            archive.Read("/filters.png");
        } catch (const TError&) {
        }
    }
    const auto errorOf = [](const QString& path) { return ErrorOf([&] { TChmArchive archive(path); }); };
    for (const qsizetype size : { 0LL, 4LL, 96LL, 5000LL, whole.size() - 1 })
        EXPECT_THAT(errorOf(damaged(whole.left(size))), EndsWith(": it is damaged")) << size;
    EXPECT_THAT(errorOf(Path("none.chm")), EndsWith(": the file does not exist"));

    // If the file is damaged or missing, a closed window stays closed, and an open window keeps its page.
    THelpWindow window;
    window.ShowTopic(damaged(whole.left(5000)), 90);
    window.ShowContents(Path("none.chm"));
    window.ShowTopic(HelpFile, 12345);
    EXPECT_FALSE(window.isVisible());
    window.ShowTopic(HelpFile, 90);
    window.ShowTopic(damaged(whole.left(5000)), 2007);
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
    const auto currentItem = [&] { return window.ContentsTree->currentIndex().data().toString(); };
    window.ShowTopic(HelpFile, 90);
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(currentItem(), "The main window");
    window.ShowContents(HelpFile);
    EXPECT_EQ(window.Browser->Page(), "/start.html");

    // A key in the contents opens a page. A link in a page opens another page, and the contents select the
    // line of this page.
    QApplication::setActiveWindow(&window);
    window.ContentsTree->setFocus();
    Press(Qt::Key_End);
    EXPECT_EQ(window.Browser->Page(), "/trouble.html");
    emit window.Browser->anchorClicked(QUrl("filters.html"));
    EXPECT_EQ(currentItem(), "The twelve filters");
    emit window.Browser->anchorClicked(QUrl("sizes.html#ipad"));
    EXPECT_EQ(currentItem(), "All images and their sizes");

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
    QStringList opened;
    QTextBrowser opener; // its signal reports links that other programs would open
    QObject::connect(&opener, &QTextBrowser::anchorClicked, [&](const QUrl& url) { opened += url.scheme(); });
    const QStringList links { "https://example.com/", "http://example.com/", "mailto:a@example.com",
        "javascript:alert(1)", "ftp://example.com/", "ms-its:x.chm::/y.html", "file:///etc/passwd",
        "help://x/" };
    for (const QString& link : links)
        QDesktopServices::setUrlHandler(QUrl(link).scheme(), &opener, "anchorClicked");

    PutFile(Path("secret.html"), "<p>secret</p>");
    ASSERT_TRUE(QImage(8, 8, QImage::Format_RGB32).save(Path("secret.png")));
    const QString file = QUrl::fromLocalFile(Path("secret")).toString();
    for (const QString& name : { file, Path("secret"), "../../../.." + Path("secret"), "qrc" + Path("secret"),
             "help://host" + Path("secret") }) {
        EXPECT_EQ(browser.loadResource(QTextDocument::HtmlResource, name + ".html").toByteArray(), "")
            << name.toStdString();
        // If the picture were null, the text document would look for the file itself.
        const QVariant picture = browser.loadResource(QTextDocument::ImageResource, name + ".png");
        EXPECT_EQ(picture.value<QImage>().size(), QSize(1, 1)) << name.toStdString();
        emit browser.anchorClicked(name + ".html");
        EXPECT_EQ(browser.Page(), "/window.html");
    }

    for (const QString& link : links)
        emit browser.anchorClicked(link);
    EXPECT_EQ(opened, QStringList({ "https", "http", "mailto" }));
}

TEST_F(TMainFormTest, F1OpensTheWindowsTopicAndTheButtonTheContents)
{
    Start();
    QApplication::setActiveWindow(FForm.get());
    QTest::keyClick(Ui().cb2xWidth, Qt::Key_F1);
    Click("Help");
    EXPECT_EQ(ShownHelp(), nullptr) << "there is no help file";

    ASSERT_TRUE(QFile::copy(HelpFile, Path("program/Corvadine.chm")));
    QTest::keyClick(Ui().cb2xWidth, Qt::Key_F1);
    ASSERT_NE(ShownHelp(), nullptr);
    EXPECT_EQ(ShownHelp()->Browser->Page(), "/window.html");
    Click("Help");
    EXPECT_EQ(ShownHelp()->Browser->Page(), "/start.html");
    FForm.reset();
    EXPECT_EQ(ShownHelp(), nullptr) << "closed with the program's window";
}

TEST_F(HelpViewerTest, DialogsAskForTheirTopicsAndLeaveTheHelpUsable)
{
    QWidget window;
    window.show();
    THelpWindow help;
    TWidgetPrompts prompts;
    prompts.SetWindow(&window);
    prompts.SetHelp([&](int topic) { help.ShowTopic(HelpFile, static_cast<quint32>(topic)); });
    InDialog<QDialog>([](QDialog& dialog) {
        QTest::keyClick(&dialog, Qt::Key_F1);
        dialog.close();
    });
    prompts.ChooseProjectFile();
    EXPECT_EQ(help.Browser->Page(), "/add-project.html");
    InDialog<QDialog>([&](QDialog& dialog) {
        QTest::keyClick(dialog.focusWidget(), Qt::Key_F1);
        EXPECT_EQ(help.Browser->Page(), "/picker-list.html");
        QTest::keyClick(help.windowHandle(), Qt::Key_Home, Qt::AltModifier);
        EXPECT_EQ(help.Browser->Page(), "/start.html") << "not blocked";
        dialog.close();
    });
    prompts.ChooseImage({});
}
