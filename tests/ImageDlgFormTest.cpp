#include "dialogs/ImageDlgFrm.h"

#include "images/RecognisedImage.h"
#include "tests/DialogTesting.h"
#include "widgets/PicturePreview.h"
#include "widgets/ShellBreadCrumb.h"
#include "widgets/ShellFolders.h"
#include "widgets/ShellListView.h"

#include <QAction>
#include <QLineEdit>
#include <QThreadPool>
#include <QToolButton>

namespace Corvadine {

using namespace Testing;

namespace {

class TCountingForm : public TImageDlgForm {
public:
    using TImageDlgForm::TImageDlgForm;
    void Beep() override { ++Beeps; }
    int Beeps = 0;
};

class ImageDlgFormTest : public TFolderTest {
protected:
    void SetUp() override
    {
        for (const char* name : { "p10.gif", "p9.gif", "photo.jpeg", "scan.tif", "app.ico", "notes.txt",
                 ".hidden.png", "Sub/Deep/file", "folder.png/file" })
            PutFile(Art(name), "not an image");
        PutFile(Art("broken.bmp"), "<svg/>");
        PutImage("red.png", Qt::red);
        PutImage("blue.JPG", Qt::blue);
        MakeForm(Art(""));
    }

    void MakeForm(const QString& startFolder)
    {
        FForm = std::make_unique<TCountingForm>(nullptr, startFolder);
        FForm->show();
        LetIdle();
    }

    // Returns the path of `name` in the folder of images.
    QString Art(const QString& name) { return Path("art/" + name); }

    void PutImage(const char* name, QColor color)
    {
        QImage image(40, 20, QImage::Format_RGB32);
        image.fill(color);
        ASSERT_TRUE(image.save(Art(name)));
    }

    // Waits until the preview of the selected file is shown.
    static void LetDecode()
    {
        LetIdle();
        QThreadPool::globalInstance()->waitForDone();
        LetIdle();
    }

    QAbstractItemView* List() { return FForm->cxShellListView1; }
    QModelIndex Item(const char* name) { return Find(List(), name); }
    QColor PreviewColor()
    {
        const QImage shown = FForm->cxImage1->grab().toImage();
        return shown.pixelColor(shown.rect().center());
    }
    QString Folder() { return QDir::toNativeSeparators(FForm->cxShellListView1->Folder()); }

    std::unique_ptr<TCountingForm> FForm;
};

TEST_F(ImageDlgFormTest, ListsFoldersAndTheFourMasksAgainOnReturnToTheWindow)
{
    EXPECT_EQ(Folder(), Path("art"));
    EXPECT_EQ(Names(List()),
        (QStringList { "folder.png", "Sub", "blue.JPG", "broken.bmp", "p9.gif", "p10.gif", "red.png" }));
    EXPECT_FALSE(FForm->btnAddImage->isEnabled());
    EXPECT_FALSE(FForm->edNewFilename->isVisible());
    const QRect button(FForm->btnAddImage->mapTo(FForm.get(), QPoint()), FForm->btnAddImage->size());
    EXPECT_LT(button.bottom(), FForm->ShellBreadCrumb->y()) << "in a bar of its own";
    EXPECT_GT(button.right(), FForm->width() - 10);

    Click(List(), Item("red.png"));
    PutImage("a-new-one.png", Qt::green);
    QTest::qWait(20); // so that the folder gets a later time
    PutImage("a-second-one.png", Qt::green);
    QEvent activated(QEvent::WindowActivate);
    QApplication::sendEvent(List(), &activated);
    EXPECT_TRUE(Item("a-new-one.png").isValid());
    EXPECT_EQ(List()->selectionModel()->selectedIndexes().value(0), Item("red.png"));
    EXPECT_EQ(FForm->SelectedFile, Art("red.png"));

    MakeForm(Path("gone"));
    EXPECT_EQ(Folder(), QDir::toNativeSeparators(QDir::homePath()));
}

TEST_F(ImageDlgFormTest, SelectionDecidesWhatIsShownAndCanBeAdded)
{
    FForm->edNewFilename->setText("x");
    Click(List(), Item("blue.JPG"));
    EXPECT_EQ(FForm->edNewFilename->text(), QString());
    EXPECT_TRUE(FForm->btnAddImage->isEnabled());
    LetDecode();
    for (int i = 0; i < 4; ++i)
        QTest::keyClick(List(), Qt::Key_Down);
    EXPECT_EQ(FForm->SelectedFile, Art("red.png"));
    EXPECT_LT(PreviewColor().red(), 50) << "decoded while the user was moving";
    LetDecode();
    EXPECT_EQ(PreviewColor(), QColor(Qt::red));

    for (const char* folder : { "Sub", "folder.png" }) {
        Click(List(), Item(folder));
        EXPECT_EQ(FForm->SelectedFile, Art(folder));
        EXPECT_FALSE(FForm->btnAddImage->isEnabled());
        EXPECT_EQ(PreviewColor(), QColor(Qt::red)) << "the preview keeps the last image";
    }
    Click(List(), Item("broken.bmp"));
    LetDecode();
    EXPECT_NE(PreviewColor(), QColor(Qt::red));
    TPicturePreview blank;
    blank.resize(FForm->cxImage1->size());
    EXPECT_NE(FForm->cxImage1->grab().toImage(), blank.grab().toImage());
    EXPECT_EQ(FForm->cxImage1->accessibleDescription(),
        "It is an SVG file, which Corvadine does not read: export it as PNG, 1024 x 1024 or larger.");
    EXPECT_TRUE(FForm->btnAddImage->isEnabled()) << "it can be chosen all the same";

    QTest::mouseClick(FForm->btnAddImage, Qt::LeftButton);
    EXPECT_EQ(FForm->result(), QDialog::Accepted);
    EXPECT_EQ(FForm->SelectedFile, Art("broken.bmp"));

    for (const char* name : { "missing.PNG", "photo.jpeg", "app.ico" })
        EXPECT_TRUE(IsRecognisedImageFile(Art(name))) << name;
    for (const char* name :
        { "folder.png", "a.tga", "a.svg", "film.avi", "film.MPEG", "film.wmv", "png", "a.png.bak", "" })
        EXPECT_FALSE(IsRecognisedImageFile(Art(name))) << name;
    emit FForm->cxShellListView1->ItemSelected(Path(QString(250, u'x') + "/image.png"));
    EXPECT_EQ(FForm->SelectedFile, QString()) << "more than 260 characters";
}

TEST_F(ImageDlgFormTest, OpeningAcceptsNavigatesOrBeeps)
{
    DoubleClick(List(), Item("Sub"));
    EXPECT_EQ(Folder(), Art("Sub"));
    EXPECT_EQ(FForm->ShellBreadCrumb->Path(), FForm->cxShellListView1->Folder());
    QTest::keyClick(List(), Qt::Key_Backspace);
    EXPECT_EQ(Folder(), Path("art"));

    emit FForm->cxShellListView1->ItemExecuted(Art("notes.txt"));
    EXPECT_EQ(FForm->Beeps, 1);
    EXPECT_EQ(FForm->SelectedFile, Art("notes.txt"));
    FForm->edNewFilename->setText("x");
    LetIdle();
    QTest::mouseClick(FForm->btnAddImage, Qt::LeftButton);
    EXPECT_EQ(FForm->Beeps, 2) << "a typed name enables the button, but there is no such file";
    EXPECT_TRUE(FForm->isVisible());

    DoubleClick(List(), Item("blue.JPG"));
    EXPECT_EQ(FForm->result(), QDialog::Accepted);
    EXPECT_EQ(FForm->SelectedFile, Art("blue.JPG"));
}

TEST_F(ImageDlgFormTest, PathBarWalksTheFolders)
{
    const auto crumb = [&](const QString& name) -> QToolButton* {
        for (auto* button : FForm->ShellBreadCrumb->findChildren<QToolButton*>())
            if (button->accessibleName() == name && !button->isHidden())
                return button;
        return nullptr;
    };
    FForm->ShellBreadCrumb->SetPath(Path("art/Sub/Deep"));
    LetIdle();
    QTest::mouseClick(crumb("art"), Qt::LeftButton);
    EXPECT_EQ(Folder(), Path("art"));
    LetIdle();

    QTest::mouseClick(crumb("Folders in art"), Qt::LeftButton);
    EXPECT_EQ(Names(OpenDropDown()), (QStringList { "folder.png", "Sub" }));
    Press(Qt::Key_Down);
    Press(Qt::Key_Return);
    EXPECT_EQ(OpenDropDown(), nullptr);
    EXPECT_EQ(Folder(), Art("Sub"));
    LetIdle();

    crumb("Sub")->setFocus();
    Press(Qt::Key_Left);
    EXPECT_TRUE(crumb("art")->hasFocus());
    for (int presses = 0; presses < 2; ++presses)
        Press(Qt::Key_Right);
    EXPECT_TRUE(crumb("Sub")->hasFocus()) << "the last part keeps it";
    Press(Qt::Key_Left);
    Press(Qt::Key_Return);
    EXPECT_EQ(Folder(), Path("art"));

    for (int steps = 0; FForm->aUpLevel->isEnabled() && steps < 100; ++steps) {
        FForm->aUpLevel->trigger();
        LetIdle();
    }
    EXPECT_EQ(FForm->ShellBreadCrumb->Path(), RootFolder());

    FForm->resize(500, 300); // the path below is three times as wide
    const QString longName = "A folder with a name as long as people like them";
    ASSERT_TRUE(QDir(Path({})).mkpath(longName + "/below"));
    FForm->ShellBreadCrumb->SetPath(Path(longName + "/below"));
    LetIdle();
    EXPECT_NE(crumb("below"), nullptr);
    EXPECT_EQ(crumb(longName), nullptr);
    EXPECT_NE(crumb("Folders further up"), nullptr);
}

TEST_F(ImageDlgFormTest, DrivesAndServersHaveTheirNames)
{
    if (RootFolder() == u'/')
        GTEST_SKIP() << "there are none here";
    QStringList labels;
    for (const char* path : { "C:/art/Sub", "//server/share" })
        for (const QString& folder : FolderChain(path))
            labels.append(FolderLabel(folder));
    EXPECT_EQ(labels, QStringList({ "Computer", "C:", "art", "Sub", "Computer", "//server", "share" }));
}

} // namespace

} // namespace Corvadine
