#include "dialogs/ImageDlgFrm.h"

#include "dialogs/PicturePreview.h"
#include "dialogs/ShellBreadCrumb.h"
#include "dialogs/ShellFolders.h"
#include "dialogs/ShellListView.h"
#include "images/RecognisedImage.h"
#include "tests/DialogTesting.h"

#include <QAction>
#include <QDir>
#include <QImage>
#include <QLineEdit>
#include <QThreadPool>
#include <QToolButton>

namespace Corvadine {

using namespace Testing;

namespace {

class TCountingForm : public TImageDlgForm {
public:
    using TImageDlgForm::TImageDlgForm;
    int Beeps = 0;

protected:
    void Beep() override { ++Beeps; }
};

class ImageDlgFormTest : public TFolderTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDir(Path({})).mkpath("art/Sub/Deep"));
        ASSERT_TRUE(QDir(Path({})).mkpath("art/folder.png"));
        PutImage("red.png", Qt::red);
        PutImage("blue.JPG", Qt::blue);
        for (const char* name : { "broken.bmp", "p10.gif", "p9.gif", "photo.jpeg", "scan.tif", "app.ico",
                 "notes.txt", ".hidden.png" })
            PutFile(Art(name), "not an image");
        MakeForm(Art({}) + QDir::separator());
    }

    void MakeForm(const QString& startFolder)
    {
        FForm = std::make_unique<TCountingForm>(nullptr, startFolder);
        FForm->show();
        LetIdle();
    }

    // The path of `name` in the folder of images, as the dialog returns paths.
    QString Art(const QString& name)
    {
        return QDir::toNativeSeparators(Path("art" + (name.isEmpty() ? name : u'/' + name)));
    }

    void PutImage(const char* name, QColor color)
    {
        QImage image(40, 20, QImage::Format_RGB32);
        image.fill(color);
        ASSERT_TRUE(image.save(Art(name)));
    }

    // Until the preview of what is selected is shown.
    static void LetDecode()
    {
        LetIdle();
        QThreadPool::globalInstance()->waitForDone();
        LetIdle();
    }

    QAbstractItemView* List() { return FForm->cxShellListView1; }
    QModelIndex Item(const char* name) { return Find(List(), name); }
    QColor PreviewColor() { return FForm->cxImage1->Image().pixelColor(0, 0); }
    QString Folder() { return QDir::toNativeSeparators(FForm->cxShellListView1->Folder()); }

    std::unique_ptr<TCountingForm> FForm;
};

TEST_F(ImageDlgFormTest, ListsFoldersAndTheFourMasks)
{
    EXPECT_EQ(Folder(), Art({}));
    EXPECT_EQ(Names(List()),
        (QStringList { "folder.png", "Sub", "blue.JPG", "broken.bmp", "p9.gif", "p10.gif", "red.png" }));
    EXPECT_EQ(FForm->SelectedFile, QString());
    EXPECT_FALSE(FForm->btnAddImage->isEnabled());
    EXPECT_FALSE(FForm->edNewFilename->isVisible());

    MakeForm(Path("gone"));
    EXPECT_EQ(Folder(), QDir::toNativeSeparators(QDir::homePath()));
}

TEST_F(ImageDlgFormTest, SelectionDecidesWhatCanBeAdded)
{
    Click(List(), Item("red.png"));
    EXPECT_EQ(FForm->SelectedFile, Art("red.png"));
    EXPECT_TRUE(FForm->btnAddImage->isEnabled());
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
    EXPECT_TRUE(FForm->cxImage1->Image().isNull());
    EXPECT_TRUE(FForm->btnAddImage->isEnabled()) << "it can be chosen all the same";

    QTest::mouseClick(FForm->btnAddImage, Qt::LeftButton);
    EXPECT_EQ(FForm->result(), QDialog::Accepted);
    EXPECT_EQ(FForm->SelectedFile, Art("broken.bmp"));
}

TEST_F(ImageDlgFormTest, OpeningAcceptsNavigatesOrBeeps)
{
    DoubleClick(List(), Item("Sub"));
    EXPECT_EQ(Folder(), Art("Sub"));
    EXPECT_EQ(FForm->ShellBreadCrumb->Path(), FForm->cxShellListView1->Folder());
    QTest::keyClick(List(), Qt::Key_Backspace);
    EXPECT_EQ(Folder(), Art({}));

    emit FForm->cxShellListView1->ItemExecuted(Art("notes.txt"));
    EXPECT_EQ(FForm->Beeps, 1);
    EXPECT_EQ(FForm->SelectedFile, Art("notes.txt"));
    EXPECT_TRUE(FForm->isVisible());

    DoubleClick(List(), Item("blue.JPG"));
    EXPECT_FALSE(FForm->isVisible());
    EXPECT_EQ(FForm->result(), QDialog::Accepted);
    EXPECT_EQ(FForm->SelectedFile, Art("blue.JPG"));
}

TEST_F(ImageDlgFormTest, TypedNewNameEnablesButOnlyBeeps)
{
    FForm->edNewFilename->setText("x");
    LetIdle();
    EXPECT_TRUE(FForm->btnAddImage->isEnabled());
    QTest::mouseClick(FForm->btnAddImage, Qt::LeftButton);
    EXPECT_EQ(FForm->Beeps, 1);
    EXPECT_TRUE(FForm->isVisible());

    Click(List(), Item("red.png"));
    EXPECT_EQ(FForm->edNewFilename->text(), QString());
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
    ASSERT_NE(crumb("art"), nullptr);
    QTest::mouseClick(crumb("art"), Qt::LeftButton);
    EXPECT_EQ(Folder(), Art({}));
    LetIdle();

    QTest::mouseClick(crumb("Folders in art"), Qt::LeftButton);
    ASSERT_NE(OpenDropDown(), nullptr);
    EXPECT_EQ(Names(OpenDropDown()), (QStringList { "folder.png", "Sub" }));
    Press(Qt::Key_Down);
    Press(Qt::Key_Return);
    EXPECT_EQ(OpenDropDown(), nullptr);
    EXPECT_EQ(Folder(), Art("Sub"));

    FForm->resize(500, 300); // the path gets a third of what it would like
    const QString longName = "A folder with a name as long as people like them";
    ASSERT_TRUE(QDir(Path({})).mkpath(longName + "/below"));
    FForm->ShellBreadCrumb->SetPath(Path(longName + "/below"));
    LetIdle();
    EXPECT_NE(crumb("below"), nullptr);
    EXPECT_EQ(crumb(longName), nullptr);
    EXPECT_NE(crumb("Folders further up"), nullptr);
}

TEST_F(ImageDlgFormTest, UpEndsAtTheRoot)
{
    for (int steps = 0; FForm->aUpLevel->isEnabled() && steps < 100; ++steps) {
        FForm->aUpLevel->trigger();
        LetIdle();
    }
    EXPECT_FALSE(FForm->aUpLevel->isEnabled());
    EXPECT_EQ(FForm->ShellBreadCrumb->Path(), RootFolder());
}

TEST_F(ImageDlgFormTest, DrivesAndServersHaveTheirNames)
{
    if (RootFolder() == u'/')
        GTEST_SKIP() << "there are none here";
    const auto labels = [](const QString& path) {
        QStringList names;
        for (const QString& folder : FolderChain(path))
            names.append(FolderLabel(folder));
        return names;
    };
    EXPECT_EQ(labels("C:/"), QStringList({ "Computer", "C:" }));
    EXPECT_EQ(labels("C:/art/Sub"), QStringList({ "Computer", "C:", "art", "Sub" }));
    EXPECT_EQ(labels("//server/share/art"), QStringList({ "Computer", "//server", "share", "art" }));
}

TEST_F(ImageDlgFormTest, ListFollowsTheFolderOnReturnToTheWindow)
{
    Click(List(), Item("red.png"));
    PutImage("a-new-one.png", Qt::green);
    QTest::qWait(20); // the clock of the file system ticks
    PutImage("a-second-one.png", Qt::green);
    QEvent activated(QEvent::WindowActivate);
    QApplication::sendEvent(List(), &activated);
    EXPECT_TRUE(Item("a-new-one.png").isValid());
    EXPECT_EQ(List()->selectionModel()->selectedIndexes().value(0), Item("red.png"));
    EXPECT_EQ(FForm->SelectedFile, Art("red.png"));
}

TEST_F(ImageDlgFormTest, OneDecodingHoweverFastTheCursorRuns)
{
    Click(List(), Item("blue.JPG"));
    LetDecode();
    for (int i = 0; i < 4; ++i)
        QTest::keyClick(List(), Qt::Key_Down);
    EXPECT_EQ(FForm->SelectedFile, Art("red.png"));
    EXPECT_LT(PreviewColor().red(), 50) << "decoded while the user was moving";
    LetDecode();
    EXPECT_EQ(PreviewColor(), QColor(Qt::red));
}

TEST_F(ImageDlgFormTest, RecognisedAreReadableImagesButNoVideosOrFolders)
{
    for (const char* name : { "red.png", "missing.PNG", "photo.jpeg", "app.ico", "x.bmp" })
        EXPECT_TRUE(IsRecognisedImageFile(Art(name))) << name;
    for (const char* name :
        { "folder.png", "notes.txt", "film.avi", "film.MPEG", "film.wmv", "png", "a.png.bak", "" })
        EXPECT_FALSE(IsRecognisedImageFile(Art(name))) << name;

    const QString longPath = Path(QString(250, u'x') + "/image.png");
    emit FForm->cxShellListView1->ItemSelected(longPath);
    EXPECT_EQ(FForm->SelectedFile, QString()) << "more than 260 characters";
}

} // namespace

} // namespace Corvadine
