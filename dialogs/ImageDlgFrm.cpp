#include "dialogs/ImageDlgFrm.h"

#include "base/Error.h"
#include "dialogs/CommandIcons.h"
#include "dialogs/HelpKey.h"
#include "dialogs/IdleUpdate.h"
#include "dialogs/PicturePreview.h"
#include "dialogs/ShellBreadCrumb.h"
#include "dialogs/ShellFolders.h"
#include "dialogs/ShellListView.h"
#include "images/RecognisedImage.h"
#include "images/SourceImage.h"

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

// Programs on Windows, the tools that build the user's app among them, open no longer paths.
constexpr qsizetype MaxPathLength = 260;

QStringList ListedMasks()
{
    return QStringLiteral("*.jpg;*.png;*.bmp;*.gif").split(u';');
}

// The picture of `path`, no larger than `box`; nothing if it cannot be decoded.
QImage LoadPreview(const QString& path, QSize box)
{
    try {
        return LoadThumbnail(path, box).Picture;
    } catch (const std::exception&) { // also for want of memory
        return {};                    // the file can be chosen all the same
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
    , aAddImage(new QAction(QStringLiteral("Add Image"), this))
    , aUpLevel(new QAction(QStringLiteral("Up"), this))
    , btnAddImage(new QToolButton(this))
{
    setWindowTitle(QStringLiteral("Select Image"));
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
    connect(&FPreview, &QFutureWatcher<QImage>::finished, this, &TImageDlgForm::PreviewDecoded);
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

// The numbers of help/Corvadine.hhp.
void TImageDlgForm::SetHelpTopics()
{
    SetHelpTopic(*this, 2007);
    SetHelpTopic(*btnAddImage, 2008);
    SetHelpTopic(*cxShellListView1, 2010);
    SetHelpTopic(*cxImage1, 2011);
}

void TImageDlgForm::MakeCommands()
{
    aAddImage->setObjectName(QStringLiteral("aAddImage"));
    aAddImage->setIcon(CommandIcon(QStringLiteral("add-image")));
    aAddImage->setIconText(QStringLiteral("Add Selected Image")); // the caption on its button
    connect(aAddImage, &QAction::triggered, this, &TImageDlgForm::aAddImageExecute);

    aUpLevel->setObjectName(QStringLiteral("aUpLevel"));
    aUpLevel->setIcon(CommandIcon(QStringLiteral("up")));
    aUpLevel->setShortcuts({ QKeySequence(Qt::ALT | Qt::Key_Up), QKeySequence(Qt::Key_Backspace) });
    connect(aUpLevel, &QAction::triggered, this, &TImageDlgForm::aUpLevelExecute);
    addAction(aUpLevel);
}

void TImageDlgForm::LayOut()
{
    ShellBreadCrumb->setObjectName(QStringLiteral("ShellBreadCrumb"));
    ShellBreadCrumb->AddButton(aUpLevel);
    cxShellListView1->setObjectName(QStringLiteral("cxShellListView1"));
    cxShellListView1->setAccessibleName(QStringLiteral("Folders and images"));
    cxImage1->setObjectName(QStringLiteral("cxImage1"));
    cxImage1->setAccessibleName(QStringLiteral("Preview"));
    cxImage1->setFixedWidth(PreviewWidth);
    edNewFilename->setObjectName(QStringLiteral("edNewFilename"));
    edNewFilename->setAccessibleName(QStringLiteral("Filename"));
    edNewFilename->setToolTip(QStringLiteral("Filename"));
    edNewFilename->setFixedWidth(FilenameWidth);
    edNewFilename->hide();
    btnAddImage->setObjectName(QStringLiteral("btnAddImage"));
    btnAddImage->setDefaultAction(aAddImage);
    btnAddImage->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    btnAddImage->setIconSize(QSize(16, 16));
    btnAddImage->setFocusPolicy(Qt::TabFocus);
    btnAddImage->setAutoRaise(true);
    btnAddImage->setAccessibleName(aAddImage->iconText());

    auto* bar = new QWidget(this);
    bar->setAccessibleName(QStringLiteral("Event Bar"));
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
        return; // the preview keeps the last image
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
    // A name typed for a new file enables as well, though the command then only beeps: the field waits,
    // hidden, for the day when the dialog offers it.
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

// Decoding waits until all events are handled: the selection is painted first, and of the files that the
// cursor runs over with a key held down only those are decoded where it pauses.
void TImageDlgForm::SchedulePreview()
{
    if (std::exchange(FPreviewIsDue, true))
        return;
    QTimer::singleShot(0, this, &TImageDlgForm::StartPreview);
}

// In the background, since a large picture takes a second; one at a time, since it may also take the memory.
void TImageDlgForm::StartPreview()
{
    if (FPreview.isRunning() || !std::exchange(FPreviewIsDue, false) || !FSelectedIsImage)
        return;
    FPreview.setFuture(QtConcurrent::run(LoadPreview, SelectedFile, cxImage1->size() * devicePixelRatio()));
}

void TImageDlgForm::PreviewDecoded()
{
    cxImage1->SetImage(FPreview.result());
    StartPreview(); // of the file that was selected meanwhile, if any
}

} // namespace Corvadine
