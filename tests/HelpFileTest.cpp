// What the help says, held against the program: a page must not tell of sizes, options or captions that are
// not there.

#include "app/MainFrm.h"
#include "cli/Cli.h"
#include "dialogs/AddProjFrm.h"
#include "dialogs/ImageDlgFrm.h"
#include "generate/Catalogue.h"
#include "support/ChmArchive.h"
#include "support/HelpContents.h"
#include "tests/WidgetTesting.h"
#include "tools/SilentPrompts.h"

#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QProcess>
#include <QRegularExpression>

#include <sstream>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

class HelpFileTest : public TFolderTest {
protected:
    QString PageText(const QString& path) const
    {
        const auto bytes = FArchive.Read(path);
        EXPECT_TRUE(bytes) << path.toStdString();
        return QString::fromUtf8(bytes.value_or(QByteArray()));
    }

    // Whether "/page.html#anchor" leads somewhere.
    bool Resolves(const QString& link) const
    {
        const auto page = FArchive.Read(link.section(u'#', 0, 0));
        const QString anchor = link.section(u'#', 1);
        return page && !page->isEmpty()
            && (anchor.isEmpty() || page->contains(("id=\"" + anchor + "\"").toUtf8()));
    }

    std::vector<THelpEntry> Contents() const
    {
        return ParseHelpContents(FArchive.Read(FArchive.ContentsFile()).value_or(QByteArray()));
    }

    QStringList Pages() const
    {
        QStringList pages;
        for (const THelpEntry& entry : Contents())
            pages.append(entry.Page.section(u'#', 0, 0));
        pages.removeDuplicates();
        return pages;
    }

    const TChmArchive FArchive { QStringLiteral(CORVADINE_HELP_FILE) };
};

// The first group of every match.
QStringList AllOf(const QString& text, const QString& pattern)
{
    QStringList found;
    for (auto matches = QRegularExpression(pattern).globalMatch(text); matches.hasNext();)
        found.append(matches.next().captured(1));
    return found;
}

QString Shown(QString caption)
{
    return caption.remove(u'&').simplified();
}

void AddTexts(const QWidget& window, QStringList& texts)
{
    for (const auto* button : window.findChildren<QAbstractButton*>())
        texts.append(Shown(button->text()));
    for (const auto* label : window.findChildren<QLabel*>())
        texts.append(Shown(label->text()));
    for (const auto* action : window.findChildren<QAction*>())
        texts.append(Shown(action->text()));
    for (const auto* box : window.findChildren<QComboBox*>())
        for (int i = 0; i < box->count(); ++i)
            texts.append(box->itemText(i));
    for (const auto* widget : window.findChildren<QWidget*>())
        texts.append({ Shown(widget->property("title").toString()), widget->accessibleName() });
}

} // namespace

TEST_F(HelpFileTest, EveryTopicContentsEntryAndLinkResolves)
{
    QList<quint32> topics = FArchive.TopicNumbers();
    std::sort(topics.begin(), topics.end());
    EXPECT_EQ(topics, QList<quint32>({ 90, 2006, 2007, 2008, 2010, 2011 }));
    for (const quint32 topic : topics)
        EXPECT_TRUE(Resolves(FArchive.TopicPage(topic))) << FArchive.TopicPage(topic).toStdString();
    EXPECT_TRUE(Resolves(FArchive.HomePage()));
    EXPECT_EQ(FArchive.Title(), "Corvadine Help");
    EXPECT_GT(Contents().size(), 15U);
    for (const THelpEntry& entry : Contents())
        EXPECT_TRUE(Resolves(entry.Page)) << entry.Page.toStdString();
    for (const THelpEntry& entry : ParseHelpContents(FArchive.Read("/Corvadine.hhk").value_or(QByteArray())))
        EXPECT_TRUE(Resolves(entry.Page)) << entry.Page.toStdString();
    for (const QString& page : Pages())
        for (QString link : AllOf(PageText(page), QStringLiteral("(?:href|src)=\"([^\"]*)\""))) {
            link.prepend(link.startsWith(u'#') ? page : QStringLiteral("/"));
            EXPECT_TRUE(Resolves(link)) << page.toStdString() << ": " << link.toStdString();
        }
}

TEST_F(HelpFileTest, TellsTheSizesThatAreGenerated)
{
    const TPlatforms all { .Android = true, .IPhone = true, .IPad = true, .Windows = true };
    QStringList expected;
    for (const TGenRec& record : BuildGenList(all, 400, QSize(1, 1)))
        expected.append(QStringLiteral("%1: %2 x %3 from %4")
                            .arg(record.ID)
                            .arg(record.Width)
                            .arg(record.Height)
                            .arg(IsLaunchEntry(record.ID) ? "launch" : "icon"));
    const QString page = PageText(QStringLiteral("/sizes.html"));
    QStringList told = AllOf(page, QStringLiteral("<tr>(<td>.*</td>)</tr>"));
    static const QRegularExpression Row(
        QStringLiteral("^<td>(\\w+)</td><td>(\\d+ x \\d+)(?: \\*)?</td><td>(\\w+)</td>$"));
    told.replaceInStrings(Row, QStringLiteral("\\1: \\2 from \\3"));
    expected.sort();
    told.sort();
    EXPECT_EQ(told, expected);
}

TEST_F(HelpFileTest, TellsTheCommandsAndOptionsOfTheCommandLine)
{
    const auto helpOf = [&](const QStringList& arguments) {
        std::ostringstream out;
        std::ostringstream err;
        EXPECT_EQ(RunCli(arguments + QStringList("--help"), { out, err, Path("") }), 0);
        return QString::fromStdString(out.str());
    };
    const QString general = helpOf({});
    const QStringList commands = AllOf(general.section("Commands:", 1), QStringLiteral("(?m)^  (\\w+)  "));
    EXPECT_GE(commands.size(), 12);
    QStringList options = AllOf(general, QStringLiteral("(--\\w+)"));
    for (const QString& command : commands)
        options += AllOf(helpOf({ command }), QStringLiteral("(?m)^  (?:-\\w,)?(--[\\w-]+)"));
    options.sort();
    options.removeDuplicates();

    const QString page = PageText(QStringLiteral("/command-line.html"));
    QStringList told = AllOf(page, QStringLiteral("<code>(--[\\w-]+)"));
    told += AllOf(page, QStringLiteral("PROJECT (--[\\w-]+)"));
    told.sort();
    told.removeDuplicates();
    EXPECT_EQ(told, options);
    EXPECT_EQ(AllOf(page, QStringLiteral("<tr><td><code>(\\w+)")), commands);
}

// Bold is for captions alone.
TEST_F(HelpFileTest, QuotesCaptionsAsTheyAreShown)
{
    TSilentPrompts prompts;
    TMainForm form(Path(""), prompts);
    form.StartUp();
    const TAddProjForm addProject(&form, Path(""));
    const TImageDlgForm picker(&form, Path(""));
    QStringList texts;
    for (const QWidget* window : std::initializer_list<const QWidget*> { &form, &addProject, &picker })
        AddTexts(*window, texts);
    const QString instructions = texts.filter(QStringLiteral("Piick Color")).join(QString());
    EXPECT_FALSE(instructions.isEmpty());
    for (const QString& page : Pages())
        for (const QString& caption : AllOf(PageText(page), QStringLiteral("(?s)<b>(.*?)</b>")))
            EXPECT_TRUE(texts.contains(caption.simplified()))
                << page.toStdString() << ": " << caption.toStdString();
}

// What is compiled depends on nothing but what it is compiled from.
TEST_F(HelpFileTest, CompilesToTheSameBytesAnywhere)
{
    ASSERT_TRUE(QDir().mkpath(Path("elsewhere")));
    const QString copy = Path("elsewhere/Corvadine.chm");
    QProcess compiler;
    compiler.setWorkingDirectory(Path("elsewhere"));
    QStringList arguments = QStringLiteral(CORVADINE_HELP_COMMAND).split(u'|');
    const QString program = arguments.takeFirst();
    arguments.replaceInStrings(QStringLiteral(CORVADINE_HELP_FILE), copy);
    compiler.start(program, arguments);
    ASSERT_TRUE(compiler.waitForFinished());
    EXPECT_EQ(compiler.exitCode(), 0) << compiler.readAllStandardError().toStdString();
    EXPECT_EQ(FileBytes(copy), FileBytes(QStringLiteral(CORVADINE_HELP_FILE)));
}
