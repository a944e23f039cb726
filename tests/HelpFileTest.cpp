// Compares the help with the program. The help must tell the sizes, options and captions of the program.

#include "app/MainFrm.h"
#include "cli/Cli.h"
#include "dialogs/AddProjFrm.h"
#include "dialogs/ImageDlgFrm.h"
#include "generate/Catalogue.h"
#include "support/help/ChmArchive.h"
#include "support/help/HelpContents.h"
#include "tests/WidgetTesting.h"
#include "tools/SilentPrompts.h"

#include <QComboBox>
#include <QProcess>
#include <QRegularExpression>

#include <sstream>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

class HelpFileTest : public TFolderTest {
protected:
    QString PageText(const QString& path) const { return FArchive.Read(path).value_or(""); }

    // Returns whether the page and the anchor of `link` exist. An example of `link` is "/page.html#anchor".
    bool Resolves(const QString& link) const
    {
        const auto page = FArchive.Read(link.section(u'#', 0, 0));
        const QString anchor = link.section(u'#', 1);
        return page && !page->isEmpty()
            && (anchor.isEmpty() || page->contains(("id=\"" + anchor + "\"").toUtf8()));
    }

    auto Entries(const QString& file) const { return ParseHelpContents(FArchive.Read(file).value_or("")); }

    QStringList Pages() const
    {
        QStringList pages;
        for (const THelpEntry& entry : Entries(FArchive.ContentsFile()))
            pages.append(entry.Page.section(u'#', 0, 0));
        pages.removeDuplicates();
        return pages;
    }

    const TChmArchive FArchive { QStringLiteral(CORVADINE_HELP_FILE) };
};

// Returns the text of the first group in every match of `pattern`.
QStringList AllOf(const QString& text, const QString& pattern)
{
    QStringList found;
    for (auto matches = QRegularExpression(pattern).globalMatch(text); matches.hasNext();)
        found.append(matches.next().captured(1));
    return found;
}

} // namespace

TEST_F(HelpFileTest, EveryTopicContentsEntryAndLinkResolves)
{
    for (const quint32 topic : { 90U, 2006U, 2007U, 2008U, 2010U, 2011U })
        EXPECT_TRUE(Resolves(FArchive.TopicPage(topic))) << topic;
    EXPECT_TRUE(Resolves(FArchive.HomePage()));
    EXPECT_EQ(FArchive.Title(), "Corvadine Help");
    for (const QString& file : { FArchive.ContentsFile(), QString("/Corvadine.hhk") }) {
        EXPECT_GT(Entries(file).size(), 15U);
        for (const THelpEntry& entry : Entries(file))
            EXPECT_TRUE(Resolves(entry.Page)) << entry.Page.toStdString();
    }
    for (const QString& page : Pages())
        for (QString link : AllOf(PageText(page), u"(?:href|src)=\"([^\"]*)\""_s)) {
            link.prepend(link.startsWith(u'#') ? page : u"/"_s);
            EXPECT_TRUE(Resolves(link)) << page.toStdString() << ": " << link.toStdString();
        }
}

TEST_F(HelpFileTest, TellsTheSizesThatAreGenerated)
{
    const TPlatforms all { .Android = true, .IPhone = true, .IPad = true, .Windows = true };
    QStringList expected;
    for (const TCatalogueEntry& entry : CatalogueOf(all)) {
        const QSize size = BoxOf(entry, 400, NoLaunchSize);
        if (entry.Kind != TOutputKind::MainIcon)
            expected.append(u"%1: %2 x %3 from %4"_s.arg(entry.ID)
                                .arg(size.width())
                                .arg(size.height())
                                .arg(entry.Kind == TOutputKind::Launch ? "launch" : "icon"));
    }
    const QString page = PageText(u"/sizes.html"_s);
    QStringList told = AllOf(page, u"<tr>(<td>.*</td>)</tr>"_s);
    static const QRegularExpression Row(u"^<td>(\\w+)</td><td>(\\d+ x \\d+)(?: \\*)?</td><td>(\\w+)</td>$"_s);
    told.replaceInStrings(Row, u"\\1: \\2 from \\3"_s);
    EXPECT_THAT(told, ::testing::UnorderedElementsAreArray(expected));
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
    const QStringList commands = AllOf(general.section("Commands:", 1), u"(?m)^  (\\w+)  "_s);
    EXPECT_GE(commands.size(), 12);
    QStringList options = AllOf(general, u"(--\\w+)"_s);
    for (const QString& command : commands)
        options += AllOf(helpOf({ command }), u"(?m)^  (?:-\\w,)?(--[\\w-]+)"_s);
    options.removeDuplicates();

    const QString page = PageText(u"/command-line.html"_s);
    QStringList told = AllOf(page, u"(?:<code>|PROJECT )(--[\\w-]+)"_s);
    told.removeDuplicates();
    EXPECT_THAT(told, ::testing::UnorderedElementsAreArray(options));
    EXPECT_EQ(AllOf(page, u"<tr><td><code>(\\w+)"_s), commands);
}

// In the help, only captions are bold.
TEST_F(HelpFileTest, QuotesCaptionsAsTheyAreShown)
{
    TSilentPrompts prompts;
    TMainForm form(Path(""), prompts);
    form.StartUp();
    const TAddProjForm addProject(&form, Path(""));
    const TImageDlgForm picker(&form, Path(""));
    QStringList texts;
    for (const QWidget* window : std::initializer_list<const QWidget*> { &form, &addProject, &picker }) {
        for (const auto* object : window->findChildren<QObject*>())
            for (const char* name : { "text", "title", "accessibleName" })
                texts.append(object->property(name).toString().remove(u'&').simplified());
        for (const auto* box : window->findChildren<QComboBox*>())
            for (int i = 0; i < box->count(); ++i)
                texts.append(box->itemText(i));
    }

    for (const QString& page : Pages())
        for (const QString& caption : AllOf(PageText(page), u"(?s)<b>(.*?)</b>"_s))
            EXPECT_TRUE(texts.contains(caption.simplified()))
                << page.toStdString() << ": " << caption.toStdString();
}

// The bytes of the help depend only on the files that are compiled. The folder and the time do not matter.
TEST_F(HelpFileTest, CompilesToTheSameBytesAnywhere)
{
    const QString copy = Path("Corvadine.chm");
    QProcess compiler;
    compiler.setWorkingDirectory(Path(""));
    QStringList arguments = QStringLiteral(CORVADINE_HELP_COMMAND).split(u'|');
    const QString program = arguments.takeFirst();
    arguments.replaceInStrings(QStringLiteral(CORVADINE_HELP_FILE), copy);
    compiler.start(program, arguments);
    ASSERT_TRUE(compiler.waitForFinished());
    EXPECT_EQ(compiler.exitCode(), 0) << compiler.readAllStandardError().toStdString();
    EXPECT_EQ(FileBytes(copy), FileBytes(QStringLiteral(CORVADINE_HELP_FILE)));
}
