#include "support/update/UpdateWizard.h"

#include "tests/UpdateTesting.h"
#include "tests/WidgetTesting.h"

#include <QFileInfo>
#include <QLabel>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QTreeWidget>

#include <memory>

using namespace Corvadine;
using namespace Corvadine::Testing;
using ::testing::HasSubstr;

namespace {

const QString Offered = u"A newer version is available"_s;
const QString Ready = u"Ready to install"_s;
const QString Installed = u"The update is installed"_s;
const QString Failed = u"The update did not work"_s;

} // namespace

class UpdateWizardTest : public TFolderTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDir().mkpath(FTemporary));
        PutFile(Program("Corvadine.chm"), "old help");
        PutFile(Program("extra.txt"), "old extra");
        PutFile(
            Program("CorvadineUpdate.ini"), "[update]\nkey=" + TUpdateRelease::PublicKey().toBase64() + "\n");
        ASSERT_TRUE(QFile::copy(QStringLiteral(CORVADINE_STAND_IN), Program("corvadine")));
    }

    // Puts version 1.1.0 on the server, with the help and an optional file. With `withProgram`, the release
    // also has a new executable.
    void Publish(bool withProgram)
    {
        TFolderContent content { { "Corvadine.chm", "new help" }, { "extra.txt", "new extra" } };
        if (withProgram)
            content["corvadine"] = FileBytes(Program("corvadine")) + "the new version is a little longer";
        TUpdateRelease(
            content, { "--optional", "extra.txt", "--describe", "*.chm=The <b>help</b>, rewritten." })
            .PutOn(FServer);
    }

    // Waits for the page with this heading.
    ::testing::AssertionResult Shows(const QString& heading) const
    {
        if (QTest::qWaitFor([&] { return FWizard->Heading->text() == heading; }, 20'000))
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure()
            << FWizard->Heading->text().toStdString() << ": " << FWizard->Note->text().toStdString();
    }

    static void Click(QPushButton* button)
    {
        ASSERT_TRUE(button->isVisible() && button->isEnabled());
        QTest::mouseClick(button, Qt::LeftButton);
    }

    // Opens a wizard and waits for the pages with these headings, one after the other. Clicks the button of
    // each page except the last.
    ::testing::AssertionResult Reaches(const QStringList& headings, QWidget* owner = nullptr)
    {
        FWizard.reset();
        FEngine = std::make_unique<TUpdateEngine>(TestUpdateSettings(FServer, FFolder.Path()));
        FWizard = std::make_unique<TUpdateWizard>(
            TUpdateWizard::TParts { *FEngine, Program("corvadine"), FStartHelper }, owner);
        FWizard->show();
        auto result = Shows(headings.first());
        for (qsizetype i = 1; result && i < headings.size(); ++i) {
            Click(FWizard->btnNext);
            result = Shows(headings[i]);
        }
        return result;
    }

    // Clicks the check box of `row`. Returns the new state of the check box.
    Qt::CheckState Tick(int row) const
    {
        QTreeWidget* const news = FWizard->News;
        const QRect area = news->visualItemRect(news->topLevelItem(row));
        QTest::mouseClick(news->viewport(), Qt::LeftButton, {}, QPoint(area.left() + 10, area.center().y()));
        return news->topLevelItem(row)->checkState(0);
    }

    void ExpectNothingChanged() const
    {
        EXPECT_EQ(FileBytes(Program("Corvadine.chm")), "old help");
        EXPECT_EQ(FileBytes(Program("extra.txt")), "old extra");
        EXPECT_FALSE(IsStaged());
    }

    bool IsStaged() const { return QFileInfo::exists(FFolder.Staging()); }
    std::string Log() const { return FileBytes(FFolder.Log().Path()).toStdString(); }
    QString Program(const QString& name) const { return FFolder.PathOf(name); }

    // Stages an update with the wizard, up to the point where the program would end. Calls `between`. Then
    // runs the stand-in, and the stand-in hands over to the helper. Waits until the helper has started the
    // stand-in again and the helper has removed itself. Returns the stand-in's notes.
    std::string Update(const std::function<void()>& between)
    {
        bool asked = false;
        FStartHelper = [&asked] { asked = true; };
        EXPECT_TRUE(Reaches({ Offered, Ready }));
        Click(FWizard->btnNext);
        EXPECT_TRUE(asked && FWizard->EndsProgram() && !FWizard->isVisible());
        FWizard.reset();
        FEngine.reset(); // also releases the engine's lock
        between();

        const QString notes = Program("notes.txt");
        PutFile(notes, {});
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("TMPDIR", FTemporary);
        program.setProcessEnvironment(environment);
        program.start(Program("corvadine"), { "hand-over" });
        EXPECT_TRUE(program.waitForFinished());
        EXPECT_TRUE(QTest::qWaitFor([&] { return FileBytes(notes).contains("started"); }, 20'000));
        EXPECT_TRUE(QTest::qWaitFor([this] { return QDir(FTemporary).isEmpty(); }))
            << "the helper leaves something behind";
        return FileBytes(notes).toStdString();
    }

    const TUpdateFolder FFolder { Path("program") };
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
    EXPECT_LT((wizard.geometry().center() - window.geometry().center()).manhattanLength(), 40);
    ASSERT_EQ(wizard.News->topLevelItemCount(), 2);
    EXPECT_EQ(wizard.News->topLevelItem(0)->text(0), "Corvadine.chm (required)");
    EXPECT_EQ(wizard.News->topLevelItem(0)->text(2), "22/11/2020");
    EXPECT_EQ(wizard.Description->toPlainText(), "The <b>help</b>, rewritten.");
    EXPECT_EQ(Tick(0), Qt::Checked) << "required";
    EXPECT_EQ(Tick(1), Qt::Unchecked);
    Click(wizard.btnNext);
    ASSERT_TRUE(Shows(Installed));
    EXPECT_FALSE(wizard.btnNext->isVisible() || wizard.EndsProgram());
    EXPECT_EQ(FileBytes(Program("Corvadine.chm")), "new help");
    EXPECT_EQ(FileBytes(Program("extra.txt")), "old extra") << "not ticked";
    EXPECT_FALSE(IsStaged());
    EXPECT_THAT(Log(), HasSubstr("Replace Corvadine.chm: done"));
    Click(wizard.btnCancel);
    EXPECT_FALSE(wizard.isVisible());
    FWizard.reset(); // the wizard must be deleted before the window, its owner

    ASSERT_TRUE(Reaches({ Offered, Installed })) << "what was left out is offered again";
    ASSERT_TRUE(Reaches({ "Corvadine is up to date" }));
    EXPECT_EQ(FWizard->Note->text(), "You have the newest version, 1.1.0.");
    EXPECT_THAT(Log(), HasSubstr("Look for a newer version: nothing is newer"));
}

TEST_F(UpdateWizardTest, HelperReplacesTheExecutableOrStartsTheOldOne)
{
    Publish(true);
    const char* const reason = "older than version 1.2.0";
    const QString accepted = Program("CorvadineUpdate.accepted");
    EXPECT_THAT(Update([&] { PutFile(accepted, "1.2.0\n"); }), // as if another process had installed 1.2.0
        AllOf(HasSubstr("did not work"), HasSubstr(reason), HasSubstr("started")));
    ExpectNothingChanged();
    EXPECT_THAT(Log(), HasSubstr(reason));

    QFile::remove(accepted);
    const qint64 oldSize = QFileInfo(Program("corvadine")).size();
    EXPECT_EQ(QString::fromStdString(Update([] {})),
        u"ends, %1 bytes\nCorvadine was updated to version 1.1.0.\nstarted, %2 bytes\n"_s.arg(oldSize).arg(
            oldSize + 34));
    EXPECT_FALSE(QFile::exists(Program("CorvadineUpdate.report"))) << "told once";
    EXPECT_EQ(FileBytes(Program("Corvadine.chm")), "new help");
    EXPECT_EQ(FileBytes(accepted), "1.1.0\n");
    EXPECT_FALSE(IsStaged());
    EXPECT_THAT(Log(), HasSubstr("Start Corvadine again: done"));
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
        // The headings of the pages to go through, and the path for which the server sends no body.
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
        const TUpdateLock other = FFolder.Lock();
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
    EXPECT_FALSE(IsStaged());

    Publish(true);
    FStartHelper = [] { throw TError(TErrorKind::Io, "Cannot start the update helper"); };
    QDir(Program("Corvadine.chm")).removeRecursively();
    ASSERT_TRUE(Reaches({ Offered, Ready, Failed }));
    EXPECT_FALSE(FWizard->EndsProgram() || IsStaged());
}
