#include "support/UpdateWizard.h"

#include "base/Error.h"
#include "support/AcceptedVersion.h"
#include "support/StagedUpdate.h"
#include "support/UpdateEngine.h"
#include "support/UpdateHandOver.h"
#include "support/UpdateInstaller.h"

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

// See app/Icons.cpp on why this stands outside of any namespace.
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

// Texts come from servers, folders and the system: they are shown as they are.
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
    picture->setPixmap(
        QIcon(QStringLiteral(":/pictures/billboard.png")).pixmap(TUpdateWizardSettings::BillBoard));
    picture->setScaledContents(TUpdateWizardSettings::BillBoardStretch);
    picture->setFixedWidth(TUpdateWizardSettings::BillBoard.width());
    picture->setMinimumHeight(TUpdateWizardSettings::BillBoard.height());
    picture->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Ignored);
    return picture;
}

QFont WizardFont()
{
    QFont font(TUpdateWizardSettings::FontName, TUpdateWizardSettings::FontPoints, QFont::Bold);
    // DejaVu Sans has the same widths.
    font.setFamilies({ TUpdateWizardSettings::FontName, QStringLiteral("DejaVu Sans") });
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
    , FLog(FParts.WebUpdate.Settings().ProgramFolder)
{
    setWindowTitle(TUpdateWizardSettings::Caption);
    setFont(WizardFont());
    LayOut();
    Connect();
    ShowNote(QStringLiteral("Look for a newer version?"), {});
    SetButtons({ QStringLiteral("&Check"), [this] { Check(); } }, QStringLiteral("Cancel"));
}

// A wizard that goes away any other way than through its buttons leaves nothing half done.
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
    resize(sizeHint().width(), TUpdateWizardSettings::BillBoard.height()); // unstretched at first
    setTabOrder(News, Description);
    setTabOrder(Description, btnNext);
    setTabOrder(btnNext, btnCancel);
}

QWidget* TUpdateWizard::MakeNotePage()
{
    auto* page = new QWidget(this);
    Note->setTextInteractionFlags(Qt::TextSelectableByMouse); // of an error, to be passed on
    Note->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    ProgressBar->setAccessibleName(QStringLiteral("Progress"));
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
    News->setAccessibleName(QStringLiteral("Newer files"));
    News->setColumnCount(ColumnCount);
    News->setHeaderLabels({ QStringLiteral("File"), QStringLiteral("Version"), QStringLiteral("Date"),
        QStringLiteral("Size") });
    News->setRootIsDecorated(false);
    News->setAllColumnsShowFocus(true);
    News->header()->setStretchLastSection(false);
    News->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    News->header()->setSectionResizeMode(NameColumn, QHeaderView::Stretch);
    Description->setAccessibleName(QStringLiteral("What is new in the selected file"));
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
    FStep = QStringLiteral("Look for a newer version");
    const QString host = FParts.WebUpdate.Settings().Url.host();
    ShowBusy(QStringLiteral("Looking for a newer version"), QStringLiteral("Asking %1 …").arg(host));
    FParts.WebUpdate.Check();
}

void TUpdateWizard::Checked(const std::vector<TUpdateItem>& items)
{
    if (items.empty()) {
        FLog.Write(FStep, QStringLiteral("nothing is newer"));
        ShowNote(QStringLiteral("Corvadine is up to date"),
            QStringLiteral("You have the newest version, %1.")
                .arg(VersionText(NewestAcceptedVersion(FParts.WebUpdate.Settings()))));
        return;
    }
    try { // who cannot install it should not have to choose and download first
        const TUpdateLock probe(FParts.WebUpdate.Settings().ProgramFolder);
    } catch (const TError& error) {
        Fail(FStep, error.Text());
        return;
    }
    FLog.Write(FStep,
        items.size() == 1 ? QStringLiteral("one file is newer")
                          : QStringLiteral("%1 files are newer").arg(items.size()));
    ShowNews(items);
}

void TUpdateWizard::Download()
{
    FStep = QStringLiteral("Download");
    ShowBusy(QStringLiteral("Downloading"), QStringLiteral("Connecting …"));
    FParts.WebUpdate.Download(Chosen());
}

void TUpdateWizard::Progress(qint64 done, qint64 total)
{
    if (total <= 0)
        return;
    ProgressBar->setRange(0, FullProgress);
    ProgressBar->setValue(static_cast<int>(done * FullProgress / total));
    Note->setText(QStringLiteral("%1 of %2").arg(SizeText(done), SizeText(total)));
}

void TUpdateWizard::Downloaded(const TStagedUpdate& update)
{
    FLog.Write(FStep, QStringLiteral("version %1, every file as published").arg(update.Version));
    FHasStaged = true;
    if (!NeedsHelper(update, FParts.WebUpdate.Settings().ProgramFolder, FParts.Executable)) {
        Install(update);
        return;
    }
    ShowNote(QStringLiteral("Ready to install"),
        QStringLiteral(
            "Version %1 replaces the program itself. Corvadine closes now, installs it and starts again.\n\n"
            "Please close its other windows first. Changes that you have not saved are lost.")
            .arg(update.Version));
    SetButtons({ QStringLiteral("&Install"), [this] { HandOver(); } }, QStringLiteral("Cancel"));
}

void TUpdateWizard::Install(const TStagedUpdate& update)
{
    QApplication::processEvents(); // a click on Cancel from while the download was verified still counts
    if (!FHasStaged)
        return;
    ShowBusy(QStringLiteral("Installing"),
        QStringLiteral("Version %1 is verified once more and put into place.").arg(update.Version));
    btnCancel->setEnabled(false);
    repaint();          // it is over before the event loop is asked again
    FHasStaged = false; // whatever happens, the installer removes it
    FInstalling = true;
    std::optional<TError> failure;
    try {
        TUpdateInstaller(FParts.WebUpdate.Settings().ProgramFolder, FLog).Install(update, FParts.Executable);
    } catch (const TError& error) {
        failure = error;
    }
    QApplication::processEvents(); // clicks from meanwhile are not for the button that stands here next
    FInstalling = false;
    if (failure) {
        Fail({}, failure->Text());
        return;
    }
    ShowNote(QStringLiteral("The update is installed"),
        QStringLiteral("Version %1 is in place. Corvadine need not be started again.").arg(update.Version));
}

void TUpdateWizard::HandOver()
{
    FStep = QStringLiteral("Hand over to the helper");
    try {
        FParts.StartHelper();
    } catch (const TError& error) {
        DropStaged();
        Fail(FStep, error.Text());
        return;
    }
    FLog.Write(FStep, QStringLiteral("done"));
    FHasStaged = false;
    FEndsProgram = true;
    accept();
}

// Without a step, the log has been told already.
void TUpdateWizard::Fail(const QString& step, const QString& text)
{
    if (!step.isEmpty())
        FLog.Write(step, QStringLiteral("failed. %1").arg(text));
    const QString state = IsRecoveryDue(FParts.WebUpdate.Settings().ProgramFolder)
        ? QStringLiteral("Please close Corvadine and start it again.")
        : QStringLiteral("Nothing of Corvadine was changed.");
    QString note = AsSentence(text) + QStringLiteral("\n\n") + state;
    const QFileInfo log(FLog.Path());
    if (log.isFile() && log.isWritable()) // else it does not tell of this
        note += QStringLiteral(" What was done so far is in\n") + QDir::toNativeSeparators(log.filePath());
    ShowNote(QStringLiteral("The update did not work"), note);
}

void TUpdateWizard::Cancelled()
{
    FLog.Write(FStep, QStringLiteral("cancelled"));
    QDialog::reject();
}

void TUpdateWizard::reject()
{
    if (FInstalling)
        return;
    if (FParts.WebUpdate.IsBusy()) {
        btnCancel->setEnabled(false);
        FParts.WebUpdate.Cancel(); // and close once it has
        return;
    }
    if (FHasStaged)
        FLog.Write(QStringLiteral("Install"), QStringLiteral("cancelled"));
    DropStaged();
    QDialog::reject();
}

void TUpdateWizard::DropStaged()
{
    if (std::exchange(FHasStaged, false))
        DropStaging(FParts.WebUpdate.Settings().ProgramFolder);
}

void TUpdateWizard::ShowNews(const std::vector<TUpdateItem>& items)
{
    News->clear();
    for (const TUpdateItem& item : items) {
        const QString name = item.Mandatory ? QStringLiteral("%1 (required)").arg(item.Name) : item.Name;
        auto* row = new QTreeWidgetItem(News,
            { name, item.Version, item.Date.date().toString(TUpdateSettings::QtDateFormat()),
                SizeText(item.Size) });
        row->setData(NameColumn, Qt::UserRole, item.Description);
        row->setTextAlignment(SizeColumn, Qt::AlignRight | Qt::AlignVCenter);
        row->setCheckState(NameColumn, Qt::Checked);
        row->setFlags(item.Mandatory ? row->flags() & ~Qt::ItemIsUserCheckable
                                     : row->flags() | Qt::ItemIsUserCheckable);
    }
    Heading->setText(QStringLiteral("A newer version is available"));
    Pages->setCurrentIndex(1);
    SetButtons({ QStringLiteral("&Update"), [this] { Download(); } }, QStringLiteral("Cancel"));
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
    SetButtons({}, QStringLiteral("Close"));
}

void TUpdateWizard::ShowBusy(const QString& heading, const QString& text)
{
    ShowNote(heading, text);
    ProgressBar->setRange(0, 0);
    ProgressBar->show();
    SetButtons({}, QStringLiteral("Cancel"));
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
