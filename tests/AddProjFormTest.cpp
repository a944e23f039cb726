#include "dialogs/AddProjFrm.h"

#include "dialogs/ShellDropDown.h"
#include "dialogs/WidgetPrompts.h"
#include "tests/DialogTesting.h"

#include <QClipboard>
#include <QDir>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTreeView>

namespace Corvadine {

using namespace Testing;

namespace {

class AddProjFormTest : public TFolderTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDir(Path({})).mkpath("Games/Empty"));
        for (const char* name : { "Games/Demo.dproj", "Games/Second.DPROJ", "Games/Demo.dproj.bak" })
            PutFile(Path(name), "x");
    }

    // Opens the tree with the mouse; it stands open at `folder`.
    QTreeView* OpenTree(TAddProjForm& form)
    {
        QWidget& box = *form.cbWizProjectFile;
        QTest::mouseClick(&box, Qt::LeftButton, {}, QPoint(box.width() - 6, box.height() / 2));
        LetIdle();
        return dynamic_cast<QTreeView*>(OpenDropDown());
    }
};

} // namespace

TEST_F(AddProjFormTest, OnlyProjectFilesEnableTheButton)
{
    TAddProjForm form(nullptr, Path({}));
    form.show();
    EXPECT_FALSE(form.btnAddProject->isEnabled());
    EXPECT_EQ(form.size(), QSize(459, 303));

    const std::pair<const char*, bool> cases[] { { "C:\\App\\Demo.dproj", true },
        { "C:\\App\\DEMO.DProj", true }, { "/app/demo.dproj", true }, { "C:\\App", false },
        { "C:\\App.dproj\\", false }, { "Demo.dproj.bak", false }, { " Demo.dproj ", false }, { "", false } };
    for (const auto& [text, enabled] : cases) {
        form.cbWizProjectFile->setEditText(text);
        LetIdle();
        EXPECT_EQ(form.btnAddProject->isEnabled(), enabled) << text;
    }
}

TEST_F(AddProjFormTest, FileIsPickedWithTheMouse)
{
    TAddProjForm form(nullptr, Path("Games/"));
    form.show();
    QTreeView* tree = OpenTree(form);
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(tree->window()->width(), 371);
    const QModelIndex games = tree->currentIndex();
    EXPECT_EQ(Names(tree, games), (QStringList { "Empty", "Demo.dproj", "Second.DPROJ" }));

    Click(tree, Find(tree, "Empty", games));
    EXPECT_EQ(OpenDropDown(), tree) << "a folder must not end the choice";
    Click(tree, Find(tree, "Second.DPROJ", games));
    EXPECT_EQ(OpenDropDown(), nullptr);
    EXPECT_EQ(form.ProjectFile(), QDir::toNativeSeparators(Path("Games/Second.DPROJ")));

    QTest::mouseClick(form.btnAddProject, Qt::LeftButton);
    EXPECT_EQ(form.result(), QDialog::Accepted);
}

TEST_F(AddProjFormTest, FileIsPickedWithTheKeyboard)
{
    TAddProjForm form(nullptr, Path("Games"));
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
    EXPECT_EQ(form.ProjectFile(), QDir::toNativeSeparators(Path("Games/Demo.dproj")));
    Press(Qt::Key_Return);
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(form.result(), QDialog::Accepted);
}

TEST_F(AddProjFormTest, TreeOpensAtTheTextOrNearby)
{
    TAddProjForm form(nullptr, Path("nowhere"));
    form.show();
    form.cbWizProjectFile->setEditText(Path("Games/Demo.dproj"));
    QTreeView* tree = OpenTree(form);
    EXPECT_EQ(tree->currentIndex().data(), "Demo.dproj");
    EXPECT_TRUE(tree->viewport()->rect().contains(tree->visualRect(tree->currentIndex())));
    Press(Qt::Key_Escape);

    form.cbWizProjectFile->setEditText("rubbish \\ : /");
    EXPECT_TRUE(OpenTree(form)->currentIndex().isValid()) << "the home folder or what leads to it";
    Press(Qt::Key_Escape);
}

TEST_F(AddProjFormTest, PromptReturnsThePastedPathAsItIs)
{
    const QString pasted = Path(QStringLiteral("Games/Empty/../Second.DPROJ")); // as it is, not tidied
    TWidgetPrompts prompts;
    const auto answer = [&](auto act) {
        InDialog<TAddProjForm>([act](TAddProjForm& form) {
            QTest::keySequence(form.cbWizProjectFile, QKeySequence(QKeySequence::Paste));
            LetIdle();
            act(form);
        });
        return prompts.ChooseProjectFile();
    };
    QGuiApplication::clipboard()->setText(pasted);
    EXPECT_EQ(
        answer([](TAddProjForm& form) { QTest::mouseClick(form.btnAddProject, Qt::LeftButton); }), pasted);
    EXPECT_EQ(
        answer([](TAddProjForm& form) { QTest::mouseClick(form.btnCancel, Qt::LeftButton); }), std::nullopt);
    EXPECT_EQ(answer([](TAddProjForm& form) { form.close(); }), std::nullopt);
    EXPECT_EQ(answer([](TAddProjForm& form) { QTest::keyClick(&form, Qt::Key_Escape); }), std::nullopt);
}

TEST_F(AddProjFormTest, TypedTextMustBeAFullPath)
{
    TAddProjForm form(nullptr, {});
    form.show();
    QStringList reasons;
    QObject::connect(&form, &TAddProjForm::Refused, [&](const QString& reason) { reasons.append(reason); });
    for (const char* text : { "Demo.dproj", ".dproj", "C:Demo.dproj", "C:\\App\\Demo.dproj" }) {
        EXPECT_TRUE(form.isVisible()) << "before " << text;
        form.cbWizProjectFile->setEditText(text);
        LetIdle();
        QTest::mouseClick(form.btnAddProject, Qt::LeftButton);
    }
    EXPECT_FALSE(form.isVisible()) << "it may be still to come";
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
            if (button == QMessageBox::NoButton)
                QTest::keyClick(&box, Qt::Key_Escape);
            else
                QTest::mouseClick(box.button(button), Qt::LeftButton);
        });
    };
    answer(QMessageBox::Ok);
    prompts.ShowError("<b>a.png</b>\r\n5 < 6");
    EXPECT_EQ(shown, "<b>a.png</b>\n5 < 6");
    answer(QMessageBox::Ok);
    prompts.Inform("done");
    EXPECT_EQ(shown, "done");
    for (const auto button : { QMessageBox::Yes, QMessageBox::No, QMessageBox::NoButton }) {
        answer(button);
        EXPECT_EQ(prompts.Confirm("sure?"), button == QMessageBox::Yes);
    }
}

} // namespace Corvadine
