#include "support/UpdateWizard.h"

#include "support/StagedUpdate.h"
#include "tests/UpdateTesting.h"
#include "tests/WidgetTesting.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QTreeWidget>

#include <memory>
#include <utility>

using namespace Corvadine;
using namespace Corvadine::Testing;
using ::testing::HasSubstr;

namespace {

const QString Offered = QStringLiteral("A newer version is available");
const QString Ready = QStringLiteral("Ready to install");
const QString Installed = QStringLiteral("The update is installed");
const QString Failed = QStringLiteral("The update did not work");

} // namespace

class UpdateWizardTest : public TFolderTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDir().mkpath(FTemporary));
        PutFile(Program("Corvadine.chm"), "old help");
        PutFile(Program("extra.txt"), "old extra");
        PutFile(Program("Corvadine.db"), "projects");
        PutFile(
            Program("CorvadineUpdate.ini"), "[update]\nkey=" + TUpdateRelease::PublicKey().toBase64() + "\n");
        ASSERT_TRUE(QFile::copy(QStringLiteral(CORVADINE_STAND_IN), Program("corvadine")));
    }

    // Puts version 1.1.0 on the server: the help, something optional and, if asked for, another executable.
    void Publish(bool withProgram)
    {
        const QTemporaryDir folder;
        PutFile(folder.filePath("Corvadine.chm"), "new help");
        PutFile(folder.filePath("extra.txt"), "new extra");
        if (withProgram) {
            const QString program = folder.filePath("corvadine");
            QByteArray bytes = FileBytes(Program("corvadine"));
            PutFile(program, bytes.append("the new version is a little longer"));
            QFile::setPermissions(program, QFile::permissions(Program("corvadine")));
        }
        TUpdateRelease(folder.path(), "1.1.0",
            { "--optional", "extra.txt", "--describe", "*.chm=The <b>help</b>, rewritten." })
            .PutOn(FServer);
    }

    // Waits for the page with this heading.
    ::testing::AssertionResult Shows(const QString& heading) const
    {
        constexpr int PatienceMilliseconds = 20'000;
        if (QTest::qWaitFor([&] { return FWizard->Heading->text() == heading; }, PatienceMilliseconds))
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure()
            << FWizard->Heading->text().toStdString() << ": " << FWizard->Note->text().toStdString();
    }

    static void Click(QPushButton* button)
    {
        ASSERT_TRUE(button->isVisible() && button->isEnabled());
        QTest::mouseClick(button, Qt::LeftButton);
    }

    // Opens a wizard and waits for the pages with these headings, each but the last left by its button.
    ::testing::AssertionResult Reaches(const QStringList& headings, QWidget* owner = nullptr)
    {
        FWizard.reset();
        FEngine = std::make_unique<TUpdateEngine>(TestUpdateSettings(FServer, FProgram));
        FWizard = std::make_unique<TUpdateWizard>(
            TUpdateWizard::TParts { *FEngine, Program("corvadine"), [this] { FStartHelper(); } }, owner);
        FWizard->show();
        auto result = Shows(headings.first());
        for (qsizetype i = 1; result && i < headings.size(); ++i) {
            Click(FWizard->btnNext);
            result = Shows(headings[i]);
        }
        return result;
    }

    // As a user does: with the mouse on the box of the row.
    void Tick(int row) const
    {
        const QTreeWidget* news = FWizard->News;
        const QRect area = news->visualItemRect(news->topLevelItem(row));
        QTest::mouseClick(news->viewport(), Qt::LeftButton, {}, QPoint(area.left() + 10, area.center().y()));
    }

    Qt::CheckState StateOf(int row) const { return FWizard->News->topLevelItem(row)->checkState(0); }

    void ExpectNothingChanged() const
    {
        EXPECT_EQ(FileBytes(Program("Corvadine.chm")), "old help");
        EXPECT_EQ(FileBytes(Program("extra.txt")), "old extra");
        EXPECT_FALSE(QFileInfo::exists(StagingFolderOf(FProgram)));
    }

    std::string Log() const { return FileBytes(Program("WUPDATE.LOG")).toStdString(); }
    QString Program(const QString& name) const { return FProgram + '/' + name; }

    // With the wizard, until all is staged and the program would end.
    void StageForHelper()
    {
        bool asked = false;
        FStartHelper = [&asked] { asked = true; };
        ASSERT_TRUE(Reaches({ Offered, Ready }));
        EXPECT_EQ(FileBytes(Program("Corvadine.chm")), "old help");
        Click(FWizard->btnNext);
        EXPECT_TRUE(asked && FWizard->EndsProgram() && !FWizard->isVisible());
        FWizard.reset();
        FEngine.reset();
    }

    // Runs the stand-in as the program that hands over; waits until the helper has started it again and is
    // gone. Returns the stand-in's notes.
    QByteArray HandOver() const
    {
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("TMPDIR", FTemporary);
        program.setProcessEnvironment(environment);
        program.start(Program("corvadine"), { "hand-over" });
        EXPECT_TRUE(program.waitForFinished());
        EXPECT_TRUE(QTest::qWaitFor(
            [this] { return QFile::exists(Program("notes.txt")) && Notes().contains("started"); }, 20'000));
        EXPECT_TRUE(QTest::qWaitFor([this] { return QDir(FTemporary).isEmpty(); }))
            << "the helper leaves something behind";
        return Notes();
    }

    QByteArray Notes() const { return FileBytes(Program("notes.txt")); }

    const QString FProgram = Path("program");
    const QString FTemporary = Path("temporary");
    TUpdateServer FServer;
    std::function<void()> FStartHelper = [] { ADD_FAILURE() << "no helper is needed"; };
    std::unique_ptr<TUpdateEngine> FEngine;
    std::unique_ptr<TUpdateWizard> FWizard;
};

TEST_F(UpdateWizardTest, OffersWhatIsNewerAndReplacesDataInPlace)
{
    Publish(false);
    QWidget window;
    window.setGeometry(60, 40, 700, 500);
    window.show();
    ASSERT_TRUE(Reaches({ Offered }, &window)) << "without a click";
    TUpdateWizard& wizard = *FWizard;
    EXPECT_EQ(wizard.windowTitle(), "Corvadine Update");
    EXPECT_LT((wizard.geometry().center() - window.geometry().center()).manhattanLength(), 40);
    ASSERT_EQ(wizard.News->topLevelItemCount(), 2);
    const QTreeWidgetItem* help = wizard.News->topLevelItem(0);
    EXPECT_EQ(help->text(0), "Corvadine.chm (required)");
    EXPECT_EQ(help->text(2), "22/11/2020");
    EXPECT_EQ(wizard.Description->toPlainText(), "The <b>help</b>, rewritten.");
    Tick(0);
    EXPECT_EQ(StateOf(0), Qt::Checked) << "required";
    Tick(1);
    EXPECT_EQ(StateOf(1), Qt::Unchecked);
    Click(wizard.btnNext);
    ASSERT_TRUE(Shows(Installed));
    EXPECT_FALSE(wizard.btnNext->isVisible());
    EXPECT_FALSE(wizard.EndsProgram());
    EXPECT_EQ(FileBytes(Program("Corvadine.chm")), "new help");
    EXPECT_EQ(FileBytes(Program("extra.txt")), "old extra") << "not ticked";
    EXPECT_EQ(FileBytes(Program("Corvadine.db")), "projects");
    EXPECT_FALSE(QFileInfo::exists(StagingFolderOf(FProgram)));
    EXPECT_THAT(Log(), HasSubstr("Replace Corvadine.chm: done"));
    Click(wizard.btnCancel);
    EXPECT_FALSE(wizard.isVisible());
    FWizard.reset(); // before its window

    ASSERT_TRUE(Reaches({ Offered, Installed })) << "what was left out is offered again";
    ASSERT_TRUE(Reaches({ "Corvadine is up to date" }));
    EXPECT_EQ(FWizard->Note->text(), "You have the newest version, 1.1.0.");
    EXPECT_THAT(Log(), HasSubstr("Look for a newer version: nothing is newer"));
}

TEST_F(UpdateWizardTest, HelperReplacesTheExecutableAndStartsIt)
{
    Publish(true);
    const auto oldSize = QByteArray::number(QFileInfo(Program("corvadine")).size());
    const auto newSize = QByteArray::number(QFileInfo(Program("corvadine")).size() + 34);
    StageForHelper();
    EXPECT_EQ(HandOver(),
        "ends, " + oldSize + " bytes\nCorvadine was updated to version 1.1.0.\nstarted, " + newSize
            + " bytes\n");
    EXPECT_FALSE(QFile::exists(Program("CorvadineUpdate.report"))) << "told once";
    EXPECT_EQ(FileBytes(Program("Corvadine.chm")), "new help");
    EXPECT_EQ(FileBytes(Program("CorvadineUpdate.accepted")), "1.1.0\n");
    EXPECT_FALSE(QFileInfo::exists(StagingFolderOf(FProgram)));
    EXPECT_THAT(Log(), HasSubstr("Start Corvadine again: done"));
}

TEST_F(UpdateWizardTest, HelperStartsTheOldProgramWhenItCannotInstall)
{
    Publish(true);
    const auto expectRefusal = [this](const char* text) {
        EXPECT_THAT(HandOver().toStdString(), AllOf(HasSubstr("did not work"), HasSubstr(text)));
        ExpectNothingChanged();
        EXPECT_THAT(Log(), HasSubstr(text));
    };
    StageForHelper();
    PutFile(StagingFolderOf(FProgram) + "/files/extra.txt", "spoilt");
    expectRefusal("not the file");
    QFile::remove(Program("notes.txt"));
    StageForHelper();
    PutFile(Program("CorvadineUpdate.accepted"), "1.2.0\n"); // which somebody else has installed meanwhile
    expectRefusal("older than version 1.2.0");
}

TEST_F(UpdateWizardTest, CanBeLeftOnEveryPageInEveryWay)
{
    Publish(true);
    const std::function<void()> ways[] {
        [this] { Click(FWizard->btnCancel); },
        [this] { QTest::keyClick(FWizard.get(), Qt::Key_Escape); },
        [this] { FWizard->close(); },
    };
    const std::pair<QStringList, QString> pages[] {
        // And what the server is silent about from then on.
        { { Offered }, {} },
        { { Offered, Ready }, {} },
        { { Offered, "Downloading" }, PackageUrlPath },
        { { "Looking for a newer version" }, TUpdateSettings::ControlFilePath },
    };
    for (const auto& [headings, silent] : pages)
        for (const auto& leave : ways) {
            FServer.Put(silent, { OkHeaders, TThen::Stall });
            ASSERT_TRUE(Reaches(headings));
            leave();
            EXPECT_TRUE(QTest::qWaitFor([this] { return !FWizard->isVisible(); }));
            EXPECT_FALSE(FWizard->EndsProgram());
            ExpectNothingChanged();
        }
    EXPECT_THAT(Log(), HasSubstr("Download: cancelled"));
}

TEST_F(UpdateWizardTest, TellsInPlainWordsWhatWentWrong)
{
    ASSERT_TRUE(Reaches({ Failed })) << "nothing is published";
    EXPECT_THAT(FWizard->Note->text().toStdString(), HasSubstr("WUPDATE.LOG"));
    EXPECT_THAT(Log(), HasSubstr("Look for a newer version: failed. "));

    Publish(false);
    {
        const TUpdateLock other(FProgram);
        ASSERT_TRUE(Reaches({ Failed })) << "before anything is offered";
    }
    ASSERT_TRUE(Reaches({ Offered }));
    Tick(1);
    QFile::remove(Program("Corvadine.chm"));
    PutFile(Program("Corvadine.chm/in the way"), {});
    Click(FWizard->btnNext);
    ASSERT_TRUE(Shows(Failed));
    EXPECT_THAT(FWizard->Note->text().toStdString(), HasSubstr("Corvadine.chm"));
    EXPECT_EQ(FileBytes(Program("extra.txt")), "old extra");
    EXPECT_FALSE(QFileInfo::exists(StagingFolderOf(FProgram)));

    Publish(true);
    FStartHelper = [] { throw TError(TErrorKind::Io, "Cannot start the update helper"); };
    QDir(Program("Corvadine.chm")).removeRecursively();
    ASSERT_TRUE(Reaches({ Offered, Ready, Failed }));
    EXPECT_FALSE(FWizard->EndsProgram() || QFileInfo::exists(StagingFolderOf(FProgram)));
}
