#include "support/update/UpdateWizard.h"

#include "base/Error.h"
#include "support/update/UpdateEngine.h"
#include "support/update/UpdateHandOver.h"
#include "support/update/rules/UpdateInstaller.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedWidget>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <QtMath>

#include <optional>
#include <utility>

// This function must be outside of any namespace, because Q_INIT_RESOURCE does not work inside of
// a namespace.
static void RegisterPictures()
{
    Q_INIT_RESOURCE(wizard);
}

namespace Corvadine {

namespace {

constexpr int Margin = 14;
constexpr int PageWidth = 430;
constexpr int FullProgress = 1000;
constexpr double HeadingScale = 1.35;

enum TColumn { NameColumn, VersionColumn, DateColumn, SizeColumn, ColumnCount };

QString SizeText(qint64 bytes)
{
    return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat);
}

QString AsSentence(const QString& text)
{
    return text.endsWith(u'.') ? text : text + u'.';
}

// Makes a label for plain text, because texts of servers, folders and the system must not act as markup.
QLabel* MakeLabel(QWidget* parent)
{
    auto* label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

QLabel* MakeBillBoard(QWidget* parent)
{
    RegisterPictures();
    auto* picture = new QLabel(parent);
    picture->setPixmap(QIcon(u":/pictures/billboard.png"_s).pixmap(TUpdateWizardSettings::BillBoard));
    picture->setScaledContents(TUpdateWizardSettings::BillBoardStretch);
    picture->setFixedWidth(TUpdateWizardSettings::BillBoard.width());
    picture->setMinimumHeight(TUpdateWizardSettings::BillBoard.height());
    picture->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Ignored);
    return picture;
}

QFont WizardFont()
{
    QFont font(TUpdateWizardSettings::FontName, TUpdateWizardSettings::FontPoints, QFont::Bold);
    // Systems without Verdana use DejaVu Sans, because the letters of both fonts have the same widths.
    font.setFamilies({ TUpdateWizardSettings::FontName, u"DejaVu Sans"_s });
    return font;
}

} // namespace

TUpdateWizard::TUpdateWizard(TParts parts, QWidget* owner)
    : QDialog(owner)
    , Heading(MakeLabel(this))
    , Pages(new QStackedWidget(this))
    , News(new QTreeWidget(this))
    , Description(new QPlainTextEdit(this))
    , Note(MakeLabel(this))
    , ProgressBar(new QProgressBar(this))
    , btnNext(new QPushButton(this))
    , btnCancel(new QPushButton(this))
    , FParts(std::move(parts))
    , FFolder(FParts.WebUpdate.Settings().Folder)
{
    setWindowTitle(TUpdateWizardSettings::Caption);
    setFont(WizardFont());
    LayOut();
    Connect();
    ShowNote(u"Look for a newer version?"_s, {});
    SetButtons({ u"&Check"_s, [this] { Check(); } }, u"Cancel"_s);
}

// Cancels a running step and removes a staged update, because the wizard may be destroyed without a click on
// a button.
TUpdateWizard::~TUpdateWizard()
{
    FParts.WebUpdate.disconnect(this);
    FParts.WebUpdate.Cancel();
    DropStaged();
}

void TUpdateWizard::LayOut()
{
    QFont headingFont = font();
    headingFont.setPointSizeF(headingFont.pointSizeF() * HeadingScale);
    Heading->setFont(headingFont);
    Pages->addWidget(MakeNotePage());
    Pages->addWidget(MakeNewsPage());

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(btnNext);
    buttons->addWidget(btnCancel);
    auto* page = new QVBoxLayout;
    page->setContentsMargins(Margin, Margin, Margin, Margin);
    page->setSpacing(Margin);
    page->addWidget(Heading);
    page->addWidget(Pages, 1);
    page->addLayout(buttons);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(MakeBillBoard(this));
    layout->addLayout(page);
    Pages->setMinimumWidth(PageWidth);
    // At first, the picture is not stretched.
    resize(sizeHint().width(), TUpdateWizardSettings::BillBoard.height());
    setTabOrder(News, Description);
    setTabOrder(Description, btnNext);
    setTabOrder(btnNext, btnCancel);
}

QWidget* TUpdateWizard::MakeNotePage()
{
    auto* page = new QWidget(this);
    Note->setTextInteractionFlags(Qt::TextSelectableByMouse); // so that users can copy the text of an error
    Note->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    ProgressBar->setAccessibleName(u"Progress"_s);
    ProgressBar->setTextVisible(false);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(Margin);
    layout->addWidget(Note);
    layout->addWidget(ProgressBar);
    layout->addStretch();
    return page;
}

QWidget* TUpdateWizard::MakeNewsPage()
{
    auto* page = new QWidget(this);
    News->setAccessibleName(u"Newer files"_s);
    News->setColumnCount(ColumnCount);
    News->setHeaderLabels({ u"File"_s, u"Version"_s, u"Date"_s, u"Size"_s });
    News->setRootIsDecorated(false);
    News->setAllColumnsShowFocus(true);
    News->header()->setStretchLastSection(false);
    News->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    News->header()->setSectionResizeMode(NameColumn, QHeaderView::Stretch);
    Description->setAccessibleName(u"What is new in the selected file"_s);
    Description->setReadOnly(true);
    Description->setTabChangesFocus(true);
    constexpr int DescriptionLines = 4;
    Description->setFixedHeight(Description->fontMetrics().lineSpacing() * DescriptionLines
        + 2 * (qCeil(Description->document()->documentMargin()) + Description->frameWidth()));
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(News, 1);
    layout->addWidget(Description);
    return page;
}

void TUpdateWizard::Connect()
{
    const TUpdateEngine* const engine = &FParts.WebUpdate;
    connect(engine, &TUpdateEngine::Checked, this, &TUpdateWizard::Checked);
    connect(engine, &TUpdateEngine::Progress, this, &TUpdateWizard::Progress);
    connect(engine, &TUpdateEngine::Downloaded, this, &TUpdateWizard::Downloaded);
    connect(engine, &TUpdateEngine::Failed, this, [this](const QString& text) { Fail(FStep, text); });
    connect(engine, &TUpdateEngine::Cancelled, this, &TUpdateWizard::Cancelled);
    connect(btnNext, &QPushButton::clicked, this, [this] { std::exchange(FNext, {})(); });
    connect(btnCancel, &QPushButton::clicked, this, &TUpdateWizard::reject);
    connect(News, &QTreeWidget::currentItemChanged, this, [this](const QTreeWidgetItem* item) {
        Description->setPlainText(item ? item->data(NameColumn, Qt::UserRole).toString() : QString());
    });
    connect(News, &QTreeWidget::itemChanged, this, [this] { btnNext->setEnabled(!Chosen().empty()); });
}

void TUpdateWizard::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (!std::exchange(FStarted, true) && TUpdateWizardSettings::AutoStart)
        Check();
}

void TUpdateWizard::Check()
{
    FStep = u"Look for a newer version"_s;
    const QString host = FParts.WebUpdate.Settings().Url.host();
    ShowBusy(u"Looking for a newer version"_s, u"Asking %1 …"_s.arg(host));
    FParts.WebUpdate.Check();
}

void TUpdateWizard::Checked(const std::vector<TUpdateFile>& files)
{
    if (files.empty()) {
        FFolder.Log().Write(FStep, u"nothing is newer"_s);
        ShowNote(u"Corvadine is up to date"_s,
            u"You have the newest version, %1."_s.arg(
                VersionText(NewestAcceptedVersion(FParts.WebUpdate.Settings()))));
        return;
    }
    try { // if the folder cannot be written, the user learns it now, not after the download
        const TUpdateLock probe = FFolder.Lock();
    } catch (const TError& error) {
        Fail(FStep, error.Text());
        return;
    }
    FFolder.Log().Write(
        FStep, files.size() == 1 ? u"one file is newer"_s : u"%1 files are newer"_s.arg(files.size()));
    ShowNews(files);
}

void TUpdateWizard::Download()
{
    FStep = u"Download"_s;
    ShowBusy(u"Downloading"_s, u"Connecting …"_s);
    FParts.WebUpdate.Download(Chosen());
}

void TUpdateWizard::Progress(qint64 done, qint64 total)
{
    if (total <= 0)
        return;
    ProgressBar->setRange(0, FullProgress);
    ProgressBar->setValue(static_cast<int>(done * FullProgress / total));
    Note->setText(u"%1 of %2"_s.arg(SizeText(done), SizeText(total)));
}

void TUpdateWizard::Downloaded(const TStagedUpdate& update)
{
    FFolder.Log().Write(FStep, u"version %1, every file as published"_s.arg(update.Version));
    FHasStaged = true;
    if (!NeedsHelper(update, FFolder, FParts.Executable)) {
        Install(update);
        return;
    }
    ShowNote(u"Ready to install"_s,
        u"Version %1 replaces the program itself. Corvadine closes now, installs it and starts again.\n\n"
        "Please close its other windows first. Changes that you have not saved are lost."_s.arg(
            update.Version));
    SetButtons({ u"&Install"_s, [this] { HandOver(); } }, u"Cancel"_s);
}

void TUpdateWizard::Install(const TStagedUpdate& update)
{
    QApplication::processEvents(); // handles a click on Cancel during the verification of the download
    if (!FHasStaged)
        return;
    ShowBusy(u"Installing"_s, u"Version %1 is verified once more and put into place."_s.arg(update.Version));
    btnCancel->setEnabled(false);
    repaint();          // now, because the event loop does not run until the installation ends
    FHasStaged = false; // the installer removes the staging folder in any case
    FInstalling = true;
    std::optional<TError> failure;
    try {
        TUpdateInstaller(FFolder).Install(update, FParts.Executable);
    } catch (const TError& error) {
        failure = error;
    }
    QApplication::processEvents(); // takes clicks made meanwhile; they must not hit the next page's button
    FInstalling = false;
    if (failure) {
        Fail({}, failure->Text());
        return;
    }
    ShowNote(u"The update is installed"_s,
        u"Version %1 is in place. Corvadine need not be started again."_s.arg(update.Version));
}

void TUpdateWizard::HandOver()
{
    FStep = u"Hand over to the helper"_s;
    try {
        FParts.StartHelper();
    } catch (const TError& error) {
        DropStaged();
        Fail(FStep, error.Text());
        return;
    }
    FFolder.Log().Write(FStep, u"done"_s);
    FHasStaged = false;
    FEndsProgram = true;
    accept();
}

// Shows the failure `text`, and writes it to the log. `step` is empty if the failure is in the log already.
void TUpdateWizard::Fail(const QString& step, const QString& text)
{
    if (!step.isEmpty())
        FFolder.Log().Write(step, u"failed. %1"_s.arg(text));
    const QString state = FFolder.IsRecoveryDue() ? u"Please close Corvadine and start it again."_s
                                                  : u"Nothing of Corvadine was changed."_s;
    QString note = AsSentence(text) + u"\n\n"_s + state;
    const QFileInfo log(FFolder.Log().Path());
    if (log.isFile() && log.isWritable()) // otherwise this failure is not in the log
        note += u" What was done so far is in\n"_s + QDir::toNativeSeparators(log.filePath());
    ShowNote(u"The update did not work"_s, note);
}

void TUpdateWizard::Cancelled()
{
    FFolder.Log().Write(FStep, u"cancelled"_s);
    QDialog::reject();
}

void TUpdateWizard::reject()
{
    if (FInstalling)
        return;
    if (FParts.WebUpdate.IsBusy()) {
        btnCancel->setEnabled(false);
        FParts.WebUpdate.Cancel(); // Cancelled() closes the wizard
        return;
    }
    if (FHasStaged)
        FFolder.Log().Write(u"Install"_s, u"cancelled"_s);
    DropStaged();
    QDialog::reject();
}

void TUpdateWizard::DropStaged()
{
    if (std::exchange(FHasStaged, false))
        FFolder.DropStaging();
}

void TUpdateWizard::ShowNews(const std::vector<TUpdateFile>& files)
{
    News->clear();
    for (const TUpdateFile& file : files) {
        const QString name = file.Mandatory ? u"%1 (required)"_s.arg(file.Target) : file.Target;
        auto* row = new QTreeWidgetItem(News,
            { name, file.Version, file.Date.date().toString(TUpdateSettings::QtDateFormat),
                SizeText(file.Size) });
        row->setData(NameColumn, Qt::UserRole, file.Description);
        row->setTextAlignment(SizeColumn, Qt::AlignRight | Qt::AlignVCenter);
        row->setCheckState(NameColumn, Qt::Checked);
        row->setFlags(row->flags().setFlag(Qt::ItemIsUserCheckable, !file.Mandatory));
    }
    Heading->setText(u"A newer version is available"_s);
    Pages->setCurrentIndex(1);
    SetButtons({ u"&Update"_s, [this] { Download(); } }, u"Cancel"_s);
    News->setCurrentItem(News->topLevelItem(0));
    News->setFocus();
}

std::vector<std::size_t> TUpdateWizard::Chosen() const
{
    std::vector<std::size_t> chosen;
    for (int row = 0; row < News->topLevelItemCount(); ++row)
        if (News->topLevelItem(row)->checkState(NameColumn) == Qt::Checked)
            chosen.push_back(static_cast<std::size_t>(row));
    return chosen;
}

void TUpdateWizard::ShowNote(const QString& heading, const QString& text)
{
    Heading->setText(heading);
    Note->setText(text);
    ProgressBar->hide();
    Pages->setCurrentIndex(0);
    SetButtons({}, u"Close"_s);
}

void TUpdateWizard::ShowBusy(const QString& heading, const QString& text)
{
    ShowNote(heading, text);
    ProgressBar->setRange(0, 0);
    ProgressBar->show();
    SetButtons({}, u"Cancel"_s);
}

void TUpdateWizard::SetButtons(TNext next, const QString& cancelCaption)
{
    const bool leadsOn = next.Execute != nullptr;
    btnNext->setVisible(leadsOn);
    btnNext->setEnabled(leadsOn);
    btnNext->setText(next.Caption);
    FNext = std::move(next.Execute);
    btnCancel->setText(cancelCaption);
    btnCancel->setEnabled(true);
    QPushButton* const first = leadsOn ? btnNext : btnCancel;
    first->setDefault(true);
    first->setFocus();
}

} // namespace Corvadine
