#include "dialogs/AddProjFrm.h"

#include "dialogs/WidgetPrompts.h"
#include "tests/DialogTesting.h"
#include "widgets/ShellDropDown.h"

#include <QClipboard>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

namespace Corvadine {

using namespace Testing;

namespace {

class AddProjFormTest : public TFolderTest {
protected:
    void SetUp() override
    {
        for (const char* name : { "Demo.dproj", "Second.DPROJ", "Demo.dproj.bak", "Empty/notes.txt" })
            PutFile(Path("Games/") + name, "x");
    }

    // Opens the tree with the mouse.
    QAbstractItemView* OpenTree(TAddProjForm& form)
    {
        QWidget& box = *form.cbWizProjectFile;
        QTest::mouseClick(&box, Qt::LeftButton, {}, QPoint(box.width() - 6, box.height() / 2));
        LetIdle();
        return OpenDropDown();
    }
};

} // namespace

TEST_F(AddProjFormTest, TreeOpensAtTheTextOrNearbyAndTheMousePicks)
{
    TAddProjForm form(nullptr, Path("nowhere"));
    form.show();
    form.cbWizProjectFile->setEditText("rubbish \\ : /");
    EXPECT_TRUE(OpenTree(form)->currentIndex().isValid()) << "the home folder or a folder above it";
    Press(Qt::Key_Escape);
    form.cbWizProjectFile->setEditText(Path("Games/Demo.dproj"));
    QAbstractItemView* tree = OpenTree(form);
    EXPECT_EQ(tree->currentIndex().data(), "Demo.dproj");
    EXPECT_TRUE(tree->viewport()->rect().contains(tree->visualRect(tree->currentIndex())));
    EXPECT_EQ(tree->window()->width(), 371);
    const QModelIndex games = tree->currentIndex().parent();
    EXPECT_EQ(Names(tree, games), (QStringList { "Empty", "Demo.dproj", "Second.DPROJ" }));

    Click(tree, Find(tree, "Empty", games));
    EXPECT_EQ(OpenDropDown(), tree) << "a folder must not end the choice";
    Click(tree, Find(tree, "Second.DPROJ", games));
    EXPECT_EQ(form.ProjectFile(), Path("Games/Second.DPROJ"));

    QTest::mouseClick(form.btnAddProject, Qt::LeftButton);
    EXPECT_EQ(form.result(), QDialog::Accepted);
}

TEST_F(AddProjFormTest, FileIsPickedWithTheKeyboard)
{
    TAddProjForm form(nullptr, Path("Games/"));
    form.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
    Press(Qt::Key_Return);
    EXPECT_TRUE(form.isVisible()) << "nothing is chosen yet";
    Press(Qt::Key_Down); // opens
    Press(Qt::Key_Escape);
    EXPECT_TRUE(form.isVisible()) << "only the drop-down closes";
    EXPECT_EQ(form.ProjectFile(), QString());
    Press(Qt::Key_F4);
    for (int i = 0; i < 2; ++i) // past the folder
        Press(Qt::Key_Down);
    Press(Qt::Key_Return);
    EXPECT_EQ(form.ProjectFile(), Path("Games/Demo.dproj"));
    Press(Qt::Key_Return);
    EXPECT_EQ(form.result(), QDialog::Accepted);
}

TEST_F(AddProjFormTest, PromptReturnsThePastedPathAsItIs)
{
    const QString pasted = Path(u"Games/Empty/../Second.DPROJ"_s);
    TWidgetPrompts prompts;
    QGuiApplication::clipboard()->setText(pasted);
    for (const bool adds : { true, false }) {
        InDialog<TAddProjForm>([adds](TAddProjForm& form) {
            QTest::keySequence(form.cbWizProjectFile, QKeySequence(QKeySequence::Paste));
            LetIdle();
            QTest::mouseClick(adds ? form.btnAddProject : form.btnCancel, Qt::LeftButton);
        });
        EXPECT_EQ(prompts.ChooseProjectFile(), adds ? std::optional(pasted) : std::nullopt);
    }
}

TEST_F(AddProjFormTest, TypedTextMustBeTheFullPathOfAProjectFile)
{
    TAddProjForm form(nullptr, {});
    form.show();
    EXPECT_EQ(form.size(), QSize(459, 303));
    QStringList reasons;
    QObject::connect(&form, &TAddProjForm::Refused, [&](const QString& reason) { reasons.append(reason); });
    for (const char* text : { "", "C:\\App.dproj\\", "C:\\Demo.dproj.bak", "Demo.dproj", ".dproj",
             "C:Demo.dproj", "C:\\App\\DEMO.DProj" }) {
        EXPECT_TRUE(form.isVisible()) << "before " << text;
        form.cbWizProjectFile->setEditText(text);
        LetIdle();
        EXPECT_EQ(form.btnAddProject->isEnabled(), QString(text).endsWith("dproj", Qt::CaseInsensitive));
        QTest::mouseClick(form.btnAddProject, Qt::LeftButton);
    }
    EXPECT_FALSE(form.isVisible()) << "the file need not exist yet";
    EXPECT_EQ(reasons, QStringList(3, "Please enter the full path of the project file, or choose it."));
}

TEST_F(AddProjFormTest, MessagesAreShownAsTheyAre)
{
    TWidgetPrompts prompts;
    QString shown;
    const auto answer = [&](QMessageBox::StandardButton button) {
        InDialog<QMessageBox>([&shown, button](QMessageBox& box) {
            EXPECT_EQ(box.textFormat(), Qt::PlainText);
            shown = box.text();
            QTest::mouseClick(box.button(button), Qt::LeftButton);
        });
    };
    answer(QMessageBox::Ok);
    prompts.ShowError("<b>a.png</b>\r\n5 < 6");
    EXPECT_EQ(shown, "<b>a.png</b>\n5 < 6");
    for (const auto button : { QMessageBox::Yes, QMessageBox::No }) {
        answer(button);
        EXPECT_EQ(prompts.Confirm("sure?"), button == QMessageBox::Yes);
    }
}

} // namespace Corvadine
