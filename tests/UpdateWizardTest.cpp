#include "support/UpdateWizard.h"

#include "support/StagedUpdate.h"
#include "support/UpdateHelper.h"
#include "support/UpdateInstaller.h"
#include "tests/UpdateTesting.h"
#include "tests/WidgetTesting.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedWidget>
#include <QTreeWidget>

#include <filesystem>
#include <memory>
#include <tuple>
#include <utility>

using namespace Corvadine;
using namespace Corvadine::Testing;
using ::testing::HasSubstr;

namespace {

const QString ControlPath = QStringLiteral("/Corvadine/Corvadine.INF");
const QString PackagePath = QStringLiteral("/Corvadine/Corvadine.CAB");

} // namespace

class UpdateWizardTest : public TFolderTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDir().mkpath(FProgram));
        ASSERT_TRUE(QDir().mkpath(FTemporary));
        ASSERT_TRUE(QFile::copy(QStringLiteral(CORVADINE_STAND_IN), Program("corvadine")));
        PutFile(Program("Corvadine.chm"), "old help");
        PutFile(Program("extra.txt"), "old extra");
        PutFile(Program("Corvadine.db"), "projects");
        PutFile(
            Program("CorvadineUpdate.ini"), "[update]\nkey=" + TUpdateRelease::PublicKey().toBase64() + "\n");
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

    TUpdateWizard& Open(QWidget* owner = nullptr)
    {
        FWizard.reset();
        FEngine = std::make_unique<TUpdateEngine>(TestUpdateSettings(FServer, FProgram));
        FWizard = std::make_unique<TUpdateWizard>(
            TUpdateWizard::TParts { *FEngine, Program("corvadine"), [this] { FStartHelper(); } }, owner);
        FWizard->show();
        return *FWizard;
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
        FStartHelper = [] {};
        TUpdateWizard& wizard = Open();
        ASSERT_TRUE(Shows("A newer version is available"));
        Click(wizard.btnNext);
        ASSERT_TRUE(Shows("Ready to install"));
        Click(wizard.btnNext);
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
    TUpdateWizard& wizard = Open(&window);
    EXPECT_EQ(wizard.windowTitle(), "Corvadine Update");
    EXPECT_LT((wizard.geometry().center() - window.geometry().center()).manhattanLength(), 40);
    EXPECT_EQ(wizard.Heading->text(), "Looking for a newer version") << "without a click";
    ASSERT_TRUE(Shows("A newer version is available"));
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
    ASSERT_TRUE(Shows("The update is installed"));
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

    Open();
    ASSERT_TRUE(Shows("A newer version is available")) << "what was left out is offered again";
    Click(FWizard->btnNext);
    ASSERT_TRUE(Shows("The update is installed"));
    Open();
    EXPECT_TRUE(Shows("Corvadine is up to date"));
    EXPECT_EQ(FWizard->Note->text(), "You have the newest version, 1.1.0.");
    EXPECT_THAT(Log(), HasSubstr("Look for a newer version: nothing is newer"));
}

TEST_F(UpdateWizardTest, HelperReplacesTheExecutableAndStartsIt)
{
    Publish(true);
    const auto oldSize = QByteArray::number(QFileInfo(Program("corvadine")).size());
    const auto newSize = QByteArray::number(QFileInfo(Program("corvadine")).size() + 34);
    bool asked = false;
    FStartHelper = [&asked] { asked = true; };
    TUpdateWizard& wizard = Open();
    ASSERT_TRUE(Shows("A newer version is available"));
    Click(wizard.btnNext);
    ASSERT_TRUE(Shows("Ready to install"));
    EXPECT_EQ(FileBytes(Program("Corvadine.chm")), "old help");
    Click(wizard.btnNext);
    EXPECT_TRUE(asked && wizard.EndsProgram() && !wizard.isVisible());
    FWizard.reset();
    FEngine.reset();
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
    const std::tuple<QString, bool, const char*> cases[] {
        { "files/extra.txt", false, "not the file" }, { "Corvadine.INF", false, "not signed" },
        { "chosen", false, "not complete" }, { "files/corvadine", true, "not complete" },
        { "files", true, "not complete" },
        { {}, false, "older than version 1.2.0" }, // which somebody else has installed meanwhile
    };
    for (const auto& [spoilt, isRemoved, text] : cases) {
        QFile::remove(Program("notes.txt"));
        QFile::remove(Program("WUPDATE.LOG"));
        StageForHelper();
        const QString path = StagingFolderOf(FProgram) + '/' + spoilt;
        if (isRemoved)
            ASSERT_TRUE(QFile::remove(path) || QDir(path).removeRecursively());
        else if (spoilt.isEmpty())
            PutFile(Program("CorvadineUpdate.accepted"), "1.2.0\n");
        else
            PutFile(path, "spoilt");
        EXPECT_THAT(HandOver().toStdString(), AllOf(HasSubstr("did not work"), HasSubstr(text)));
        ExpectNothingChanged();
        EXPECT_THAT(Log(), HasSubstr(text));
    }
}

TEST_F(UpdateWizardTest, HelperKilledAtAnyTimeLeavesTheOldOrTheNewProgram)
{
    Publish(true);
    StageForHelper();
    const QByteArray oldProgram = FileBytes(Program("corvadine"));
    QProcess helper;
    helper.start(CORVADINE_HELPER, {}); // has nothing to do
    ASSERT_TRUE(helper.waitForStarted());
    const qint64 ended = helper.processId();
    ASSERT_TRUE(helper.waitForFinished());
    // At first it is killed while it waits for us.
    qint64 waitFor = QCoreApplication::applicationPid();
    bool survived = false;
    for (int milliseconds = 200; !survived; milliseconds += 5) {
        // A folder for each, since the program that it has started may still be at work there.
        const QString program = Path(QString::number(milliseconds) + (waitFor == ended ? "" : "waiting"));
        std::filesystem::copy(
            FProgram.toStdU16String(), program.toStdU16String(), std::filesystem::copy_options::recursive);
        helper.start(CORVADINE_HELPER, HelperArguments({ program, program + "/corvadine", waitFor }));
        survived = helper.waitForFinished(milliseconds);
        if (!survived) {
            helper.kill();
            ASSERT_TRUE(helper.waitForFinished());
        }
        EXPECT_NE(RecoverUpdate(program), TRecovery::BeingInstalled);
        const bool isNew = FileBytes(program + "/corvadine") != oldProgram;
        EXPECT_EQ(FileBytes(program + "/Corvadine.chm"), isNew ? "new help" : "old help") << milliseconds;
        EXPECT_EQ(FileBytes(program + "/extra.txt"), isNew ? "new extra" : "old extra") << milliseconds;
        EXPECT_EQ(QFile::exists(program + "/CorvadineUpdate.accepted"), isNew) << milliseconds;
        EXPECT_FALSE(survived && !isNew);
        if (std::exchange(waitFor, ended) != ended) {
            EXPECT_FALSE(isNew);
            milliseconds = 0;
        }
    }
    QTest::qWait(200); // for the program that was started last
}

TEST_F(UpdateWizardTest, CanBeLeftOnEveryPageInEveryWay)
{
    Publish(true);
    using TStep = std::function<void()>;
    const TStep ways[] {
        [this] { Click(FWizard->btnCancel); },
        [this] { QTest::keyClick(FWizard.get(), Qt::Key_Escape); },
        [this] { FWizard->close(); },
    };
    const TStep pages[] {
        [this] {
            FServer.Put(ControlPath, { {}, TThen::Stall });
            Open();
            ASSERT_TRUE(Shows("Looking for a newer version"));
        },
        [this] {
            Publish(true);
            Open();
            ASSERT_TRUE(Shows("A newer version is available"));
        },
        [this] {
            FServer.Put(PackagePath, { "HTTP/1.1 200 OK\r\nContent-Length: 9999\r\n\r\nMSCF", TThen::Stall });
            Open();
            ASSERT_TRUE(Shows("A newer version is available"));
            Click(FWizard->btnNext);
            ASSERT_TRUE(Shows("Downloading"));
        },
        [this] {
            Publish(true);
            Open();
            ASSERT_TRUE(Shows("A newer version is available"));
            Click(FWizard->btnNext);
            ASSERT_TRUE(Shows("Ready to install"));
        },
    };
    for (const TStep& page : pages)
        for (const TStep& leave : ways) {
            page();
            if (HasFatalFailure())
                return;
            leave();
            EXPECT_TRUE(QTest::qWaitFor([this] { return !FWizard->isVisible(); }));
            EXPECT_FALSE(FWizard->EndsProgram());
            ExpectNothingChanged();
        }
    EXPECT_THAT(Log(), HasSubstr("Download: cancelled"));
}

TEST_F(UpdateWizardTest, TellsInPlainWordsWhatWentWrong)
{
    Open(); // nothing is published
    ASSERT_TRUE(Shows("The update did not work"));
    EXPECT_THAT(FWizard->Note->text().toStdString(), HasSubstr("WUPDATE.LOG"));
    EXPECT_THAT(Log(), HasSubstr("Look for a newer version: failed. "));

    Publish(false);
    {
        const TUpdateLock other(FProgram);
        Open();
        ASSERT_TRUE(Shows("The update did not work")) << "before anything is offered";
    }
    Open();
    ASSERT_TRUE(Shows("A newer version is available"));
    Tick(1);
    QFile::remove(Program("Corvadine.chm"));
    ASSERT_TRUE(QDir().mkpath(Program("Corvadine.chm/in the way")));
    Click(FWizard->btnNext);
    ASSERT_TRUE(Shows("The update did not work"));
    EXPECT_THAT(FWizard->Note->text().toStdString(), HasSubstr("Corvadine.chm"));
    EXPECT_EQ(FileBytes(Program("extra.txt")), "old extra");
    EXPECT_FALSE(QFileInfo::exists(StagingFolderOf(FProgram)));

    Publish(true);
    FStartHelper = [] { throw TError(TErrorKind::Io, "Cannot start the update helper"); };
    QDir(Program("Corvadine.chm")).removeRecursively();
    Open();
    ASSERT_TRUE(Shows("A newer version is available"));
    Click(FWizard->btnNext);
    ASSERT_TRUE(Shows("Ready to install"));
    Click(FWizard->btnNext);
    ASSERT_TRUE(Shows("The update did not work"));
    EXPECT_FALSE(FWizard->EndsProgram() || QFileInfo::exists(StagingFolderOf(FProgram)));
}
