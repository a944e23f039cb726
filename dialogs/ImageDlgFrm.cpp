#include "dialogs/ImageDlgFrm.h"

#include "base/Error.h"
#include "images/RecognisedImage.h"
#include "images/SourceImage.h"
#include "widgets/HelpKey.h"
#include "widgets/Icons.h"
#include "widgets/IdleUpdate.h"
#include "widgets/PicturePreview.h"
#include "widgets/ShellBreadCrumb.h"
#include "widgets/ShellFolders.h"
#include "widgets/ShellListView.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <QtConcurrent>

#include <utility>

namespace Corvadine {

namespace {

constexpr QSize ClientSize(830, 519);
constexpr int BarHeight = 27;
constexpr int Gap = 4;
constexpr int PreviewWidth = 300;
constexpr int FilenameWidth = 470;

// Many programs on Windows, such as the user's build tools, cannot open longer paths.
constexpr qsizetype MaxPathLength = 260;

QStringList ListedMasks()
{
    return u"*.jpg;*.png;*.bmp;*.gif"_s.split(u';');
}

// Returns the picture of `path`, no larger than `box`, or tells why the file cannot be decoded.
TImagePreview LoadPreview(const QString& path, QSize box)
{
    try {
        return { LoadThumbnail(path, box).Picture, {} };
    } catch (const TError& error) {
        return { {}, error.Reason().left(1).toUpper() + error.Reason().mid(1) + u'.' };
    } catch (const std::exception&) { // std::bad_alloc, because pictures can be large
        return { {}, u"There is not enough memory to decode it."_s };
    }
}

} // namespace

TImageDlgForm::TImageDlgForm(QWidget* owner, const QString& startFolder)
    : QDialog(owner,
        Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint
            | Qt::WindowCloseButtonHint)
    , ShellBreadCrumb(new TShellBreadCrumb(this))
    , cxShellListView1(new TShellListView(ListedMasks(), this))
    , cxImage1(new TPicturePreview(this))
    , edNewFilename(new QLineEdit(this))
    , aAddImage(new QAction(u"Add Image"_s, this))
    , aUpLevel(new QAction(u"Up"_s, this))
    , btnAddImage(new QToolButton(this))
{
    setWindowTitle(u"Select Image"_s);
    resize(ClientSize);
    SetHelpTopics();
    MakeCommands();
    LayOut();

    connect(ShellBreadCrumb, &TShellBreadCrumb::PathChanged, cxShellListView1, &TShellListView::SetFolder);
    connect(cxShellListView1, &TShellListView::FolderOpened, ShellBreadCrumb, &TShellBreadCrumb::SetPath);
    connect(
        cxShellListView1, &TShellListView::ItemSelected, this, &TImageDlgForm::cxShellListView1SelectItem);
    connect(
        cxShellListView1, &TShellListView::ItemExecuted, this, &TImageDlgForm::cxShellListView1ExecuteItem);
    connect(&FPreview, &QFutureWatcher<TImagePreview>::finished, this, &TImageDlgForm::PreviewDecoded);
    ShellBreadCrumb->SetPath(ExistingFolder(startFolder).value_or(QDir::homePath()));
    cxShellListView1->setFocus();
    new TIdleUpdate(this, [this] {
        aAddImageUpdate();
        aUpLevelUpdate();
    });
}

void TImageDlgForm::Beep()
{
    QApplication::beep();
}

// The topics have the numbers that help/Corvadine.hhp gives them.
void TImageDlgForm::SetHelpTopics()
{
    SetHelpTopic(*this, 2007);
    SetHelpTopic(*btnAddImage, 2008);
    SetHelpTopic(*cxShellListView1, 2010);
    SetHelpTopic(*cxImage1, 2011);
}

void TImageDlgForm::MakeCommands()
{
    aAddImage->setObjectName(u"aAddImage"_s);
    aAddImage->setIcon(CommandIcon("add-image"_L1));
    aAddImage->setIconText(u"Add Selected Image"_s); // the caption of btnAddImage
    connect(aAddImage, &QAction::triggered, this, &TImageDlgForm::aAddImageExecute);

    aUpLevel->setObjectName(u"aUpLevel"_s);
    aUpLevel->setIcon(CommandIcon("up"_L1));
    aUpLevel->setShortcuts({ QKeySequence(Qt::ALT | Qt::Key_Up), QKeySequence(Qt::Key_Backspace) });
    connect(aUpLevel, &QAction::triggered, this, &TImageDlgForm::aUpLevelExecute);
    addAction(aUpLevel);
}

void TImageDlgForm::LayOut()
{
    ShellBreadCrumb->setObjectName(u"ShellBreadCrumb"_s);
    ShellBreadCrumb->AddButton(aUpLevel);
    cxShellListView1->setObjectName(u"cxShellListView1"_s);
    cxShellListView1->setAccessibleName(u"Folders and images"_s);
    cxImage1->setObjectName(u"cxImage1"_s);
    cxImage1->setAccessibleName(u"Preview"_s);
    cxImage1->setFixedWidth(PreviewWidth);
    edNewFilename->setObjectName(u"edNewFilename"_s);
    edNewFilename->setAccessibleName(u"Filename"_s);
    edNewFilename->setToolTip(u"Filename"_s);
    edNewFilename->setFixedWidth(FilenameWidth);
    edNewFilename->hide();
    btnAddImage->setObjectName(u"btnAddImage"_s);
    btnAddImage->setDefaultAction(aAddImage);
    btnAddImage->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    btnAddImage->setIconSize(QSize(16, 16));
    btnAddImage->setFocusPolicy(Qt::TabFocus);
    btnAddImage->setAutoRaise(true);
    btnAddImage->setAccessibleName(aAddImage->iconText());

    auto* bar = new QWidget(this);
    bar->setAccessibleName(u"Event Bar"_s);
    bar->setMinimumHeight(BarHeight);
    auto* barLayout = new QHBoxLayout(bar);
    barLayout->setContentsMargins(Gap, 1, Gap, 1);
    barLayout->addWidget(edNewFilename);
    barLayout->addStretch();
    barLayout->addWidget(btnAddImage);

    auto* left = new QVBoxLayout;
    left->setSpacing(Gap);
    left->addWidget(ShellBreadCrumb);
    left->addWidget(cxShellListView1);
    auto* panels = new QHBoxLayout;
    panels->setSpacing(Gap);
    panels->setContentsMargins(Gap, 0, Gap, Gap);
    panels->addLayout(left);
    panels->addWidget(cxImage1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(bar);
    layout->addLayout(panels, 1);
}

void TImageDlgForm::Select(const QString& path)
{
    SelectedFile = path.size() <= MaxPathLength ? path : QString();
    FSelectedIsImage = IsRecognisedImageFile(SelectedFile);
}

void TImageDlgForm::cxShellListView1SelectItem(const QString& path)
{
    Select(path);
    if (!FSelectedIsImage)
        return; // the preview keeps its image
    edNewFilename->clear();
    SchedulePreview();
}

void TImageDlgForm::cxShellListView1ExecuteItem(const QString& path)
{
    Select(path);
    aAddImageExecute();
}

void TImageDlgForm::aAddImageExecute()
{
    if (FSelectedIsImage)
        accept();
    else
        Beep();
}

void TImageDlgForm::aAddImageUpdate()
{
    // A typed file name also enables the command, which then only beeps. Users cannot type a name yet,
    // because edNewFilename is hidden.
    const bool hasNewName = !ShellBreadCrumb->Path().isEmpty() && !edNewFilename->text().isEmpty();
    aAddImage->setEnabled(FSelectedIsImage || hasNewName);
}

void TImageDlgForm::aUpLevelExecute()
{
    if (const auto parent = ParentFolder(ShellBreadCrumb->Path()))
        ShellBreadCrumb->SetPath(*parent);
}

void TImageDlgForm::aUpLevelUpdate()
{
    aUpLevel->setEnabled(ParentFolder(ShellBreadCrumb->Path()).has_value());
}

// Decoding starts when all events are handled, so the list paints the selection first. While an arrow key is
// held down, only the files where the cursor pauses are decoded.
void TImageDlgForm::SchedulePreview()
{
    if (std::exchange(FPreviewIsDue, true))
        return;
    QTimer::singleShot(0, this, &TImageDlgForm::StartPreview);
}

// Decodes in the background, because a large picture takes a second. Decodes one file at a time
// to save memory.
void TImageDlgForm::StartPreview()
{
    if (FPreview.isRunning() || !std::exchange(FPreviewIsDue, false) || !FSelectedIsImage)
        return;
    FPreview.setFuture(QtConcurrent::run(LoadPreview, SelectedFile, cxImage1->size() * devicePixelRatio()));
}

void TImageDlgForm::PreviewDecoded()
{
    const TImagePreview preview = FPreview.result();
    cxImage1->SetImage(preview.Picture, preview.Fault);
    StartPreview(); // another file may have been selected meanwhile
}

} // namespace Corvadine
