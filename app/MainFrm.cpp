#include "app/MainFrm.h"

#include "app/CaptionGroup.h"
#include "app/ColorBox.h"
#include "app/FieldEditors.h"
#include "app/Icons.h"
#include "app/ProjectLookup.h"
#include "app/Ribbon.h"
#include "app/RibbonButton.h"
#include "app/StartUp.h"
#include "app/Theme.h"
#include "app/WaitCursor.h"
#include "app/WindowPlacement.h"
#include "base/Error.h"
#include "base/FileVersion.h"
#include "base/Files.h"
#include "base/PathRules.h"
#include "dialogs/CommandIcons.h"
#include "dialogs/IdleUpdate.h"
#include "dialogs/Prompts.h"
#include "generate/ClearFiles.h"
#include "generate/GenJob.h"
#include "images/ImageView.h"
#include "images/ThumbnailView.h"
#include "project/Backups.h"
#include "project/ProjectPaths.h"
#include "project/ProjectUpdater.h"
#include "support/HelpRouter.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QMimeData>
#include <QProgressBar>
#include <QToolButton>
#include <QUrl>

namespace Corvadine {

namespace {

const QString DesignedCaption = QStringLiteral("FMX Corvadine");
constexpr int MainWindowTopic = 90; // see help/Corvadine.hhp

// The one project file that is being dragged, as a local path; empty for anything else.
QString DraggedProjectFile(const QMimeData& data)
{
    const QList<QUrl> urls = data.urls();
    const QString file = urls.size() == 1 ? QDir::toNativeSeparators(urls.first().toLocalFile()) : QString();
    return IsProjectFileName(file) && FileExists(file) ? file : QString();
}

bool ShowsOtherImages(const TProject& before, const TProject& after)
{
    return before.IconImageName != after.IconImageName || before.SplashImageName != after.SplashImageName
        || before.OutputFolder != after.OutputFolder;
}

} // namespace

TMainForm::TMainForm(const QString& programFolder, TPrompts& prompts)
    : FPrompts(prompts)
    , FControls(MakeMainControls(*this, FTable, [this](const QString& text) { FPrompts.ShowError(text); }))
    , FIntake({ FTable, *FControls.ImageEnViewIcon, *FControls.ImageEnViewSplash, *FControls.MView, prompts,
          FState, [this] { FRun.Leave(); }, [this] { BuildGenList(); } })
    , FRun({ *FControls.MView, *FControls.PB, *FControls.dxRibbon1, prompts, FState,
          [this] { return FTable.Current().OutputFolder; }, [this] { BuildGenList(); },
          [this] { return TakeJob(); } })
    , FSettings({ *this, FTable, *FControls.cbProjects, FState })
    , FPicker(FControls.ImageEnViewIcon, FControls.ImageEnViewSplash, this)
{
    FState.ProgramFolder = WithTrailingDelimiter(programFolder);
    // Known even if the start-up ends before the folder is made: no backup may land elsewhere.
    FState.BackupFolder = WithTrailingDelimiter(FState.OwnFile(BackupFolderName));
    setWindowTitle(DesignedCaption);
    setWindowIcon(ApplicationIcon());
    setAcceptDrops(true);
    constexpr QSize ClientArea(1008, 729);
    resize(ClientArea);
    Centre(*this);
    MakeCommands();
    Connect();
    new TIdleUpdate(this, [this] { UpdateCommands(); });
}

// Pending edits are lost, as they would be by moving to another project.
TMainForm::~TMainForm()
{
    Guarded([this] { FSettings.Save(); });
    FTable.Close();
    delete takeCentralWidget(); // while the table and the commands that it refers to are still there
}

void TMainForm::StartUp()
{
    const std::vector<std::function<void()>> steps {
        [this] { ShowVersion(); },
        [this] { ApplyContentColor(); },
        [this] { FState.FilesGenerated = false; },
        [this] { OpenStore(); },
        [this] { QFile::remove(FState.OwnFile("Corvadine.CAB")); }, // left over from an update
        [this] { CreateFolder(FState.BackupFolder); },
        [this] { FSettings.Read(); },
        [this] { FSettings.ReopenProject(); },
        [this] { FControls.PB->setFocus(); }, // and no editor
        [this] { SetUpHelp(); },
    };
    RunStartUp(steps, [this](const QString& text) { FPrompts.ShowError(text); });
}

// The ribbon, group by group; the rules are in CommandRules.h.
void TMainForm::MakeCommands()
{
    FActions.SetGuard([this](const std::function<void()>& action) { Guarded(action); });
    struct TEntry {
        const char* Group;
        const char* Caption;
        const char* Icon;
        std::function<void()> Execute;
        bool (*Rule)(const TCommandState&);
        QKeySequence Shortcut;
        TFormAction** Toggle = nullptr; // where a toggle is kept, whose state somebody asks for
    };
    const std::vector<TEntry> entries {
        { "Project", "&Add Project", "add-project", [this] { aAddProjectExecute(); }, MayAddProject,
            QKeySequence::New },
        { "Project", "&Save Changes", "save", [this] { FTable.Post(); }, MaySave, QKeySequence::Save },
        { "Project", "&Cancel Changes", "cancel", [this] { FTable.Cancel(); }, MaySave,
            Qt::CTRL | Qt::Key_R },
        { "Project", "&Delete Project", "delete-project", [this] { FTable.Delete(); }, MayDeleteProject,
            Qt::CTRL | Qt::SHIFT | Qt::Key_Delete },
        { "Load Images", "&Icon Image", "icon-image", [this] { FIntake.ChooseIcon(); }, MayStart,
            Qt::CTRL | Qt::Key_I },
        { "Load Images", "&Launch Image", "launch-image", [this] { FIntake.ChooseSplash(); }, MayStart,
            Qt::CTRL | Qt::Key_L },
        { "General", "&Help", "help", [this] { btnHelpClick(); }, MayStart, {} },
        { "General", "&Pick Color", "pick-color", [this] { btnPickColorClick(); }, MayStart,
            Qt::CTRL | Qt::Key_P, &btnPickColor },
        { "General", "Del All I&mages", "delete-all", [this] { aClearExecute(); }, MayClear, {} },
        { "General", "Check &for Update", "check-update", [this] { btnCheckUpdatesClick(); }, MayStart, {} },
        { "Output", "&Generate", "generate", [this] { aGenerateExecute(); }, MayGenerate,
            Qt::CTRL | Qt::Key_G },
        { "Output", "&Update Project", "update-project", [this] { aProjectExecute(); }, MayUpdateProject,
            Qt::CTRL | Qt::SHIFT | Qt::Key_G },
    };
    for (const TEntry& entry : entries) {
        TFormAction& action =
            FActions.Add(QString::fromLatin1(entry.Caption), CommandIcon(QString::fromLatin1(entry.Icon)),
                entry.Execute, [this, rule = entry.Rule] { return rule(CommandState()); });
        action.Action()->setShortcut(entry.Shortcut);
        FControls.dxRibbon1->AddButton(QString::fromLatin1(entry.Group), action);
        if (entry.Toggle != nullptr) {
            action.SetCheckable(true);
            *entry.Toggle = &action;
        }
    }

    // F1 tells about the window; the button of the same caption opens the contents.
    TFormAction& aF1Help = FActions.Add(
        QStringLiteral("Help"), {}, [this] { aF1HelpExecute(); },
        [this] { return MayStart(CommandState()); });
    aF1Help.Action()->setShortcut(Qt::Key_F1);
    addAction(aF1Help.Action());
}

void TMainForm::Connect()
{
    const auto guarded = [this](auto method) {
        return [this, method](auto&&... arguments) { Guarded([&] { (this->*method)(arguments...); }); };
    };
    FTable.SetDeleteConfirmation([this] { return FPrompts.Confirm(QStringLiteral("Delete Project?")); });
    connect(FControls.cbProjects, &TProjectLookup::ValueChosen, this, guarded(&TMainForm::ProjectChosen));
    connect(FControls.btnRemoveIcon, &QToolButton::clicked, this,
        [this] { Guarded([this] { FIntake.RemoveIcon(); }); });
    connect(FControls.btnRemoveSplash, &QToolButton::clicked, this,
        [this] { Guarded([this] { FIntake.RemoveSplash(); }); });
    connect(FControls.ImageEnViewIcon, &TImageView::FileDropped, this,
        [this](const QString& file) { Guarded([&] { FIntake.TakeIcon(file); }); });
    connect(FControls.ImageEnViewSplash, &TImageView::FileDropped, this,
        [this](const QString& file) { Guarded([&] { FIntake.TakeSplash(file); }); });
    connect(&FPicker, &TColorPicker::Previewed, FControls.cbBackground, &TColorBox::ShowColor);
    connect(&FPicker, &TColorPicker::PickModeEnded, this, [this] { btnPickColor->SetChecked(false); });
    connect(&FPicker, &TColorPicker::Picked, this, guarded(&TMainForm::Picked));
}

void TMainForm::ShowVersion()
{
    // The file version has four parts; users know three of them.
    QString version = FileVersion();
    version.chop(2);
    setWindowTitle(QStringLiteral("%1 (%2)").arg(DesignedCaption, version));
}

void TMainForm::ApplyContentColor()
{
    TakeContentColor();
    FControls.ImageEnViewIcon->Clear();
    FControls.ImageEnViewSplash->Clear();
}

void TMainForm::TakeContentColor()
{
    const QColor color = ContentColor(palette());
    FControls.ImageEnViewIcon->SetContentColor(color);
    FControls.ImageEnViewSplash->SetContentColor(color);
    FControls.MView->SetContentColor(color);
}

void TMainForm::OpenStore()
{
    constexpr std::chrono::seconds Patience { 1 }; // the window stands still while the database is locked
    FStore = std::make_unique<TProjectStore>(FState.OwnFile(ProjectDatabaseName), Patience);
    FTable.Open(*FStore);
    connect(&FTable, &TProjectsTable::CurrentChanged, this,
        [this] { Guarded([this] { tblProjectsAfterScroll(); }); });
    tblProjectsAfterScroll(); // here, where an error ends the start-up, which it could not out of a signal
}

void TMainForm::SetUpHelp()
{
    FState.HelpRouter = new THelpRouter(this);
    FState.HelpRouter->SetHelpFile(FState.OwnFile("Corvadine.chm"));
    FState.HelpRouter->SetHelpType(THelpType::htHTMLhelp);
}

void TMainForm::aAddProjectExecute()
{
    if (const auto file = FPrompts.ChooseProjectFile())
        AddProject(*file);
}

void TMainForm::AddProject(const QString& projectFile)
{
    FTable.Append();
    FTable.SetField(TField::ProjectFile, projectFile);
    FTable.SetField(TField::OutputFolder, DeriveOutputFolder(projectFile));
    FTable.Post();
    FControls.cbProjects->SetValue(FTable.Current().ID);
}

void TMainForm::aGenerateExecute()
{
    Guarded([this] { FRun.Execute(); }); // an error is shown before the window closes
    if (FClosesAfterRun)
        close();
}

void TMainForm::aProjectExecute()
{
    const TProject project = FTable.Current();
    if (!FileExists(project.ProjectFile)) {
        FPrompts.ShowError(MissingProjectText);
        return;
    }
    TProjectImages images { project.ProjectFile, project.OutputFolder, {} };
    for (const TGenRec& record : FState.GenList)
        images.IDs.append(record.ID);
    ShowWaitCursor();
    QApplication::processEvents(QEventLoop::ExcludeUserInputEvents); // a double click must not update twice
    // A project file that cannot be read or written leaves the wait cursor, as users of this command know it,
    // until the next update or run has come to its end.
    const TUpdateResult result = UpdateProject(
        images, { FState.BackupFolder, QDateTime::currentDateTime(), TBackupPolicy::BestEffort });
    ShowNormalCursor();
    FPrompts.Inform(result.ClosingMessage());
}

void TMainForm::aClearExecute()
{
    const QString folder = FTable.Current().OutputFolder;
    if (!FolderExists(folder))
        return;
    if (!FPrompts.Confirm(
            QStringLiteral("This will delete all images in folder %1 Do you wish to proceed?").arg(folder)))
        return;
    const int count = DeleteFilesByMask(folder, AllFilesMask);
    FControls.MView->Clear();
    FPrompts.Inform(QStringLiteral("%1 Images Deleted").arg(count));
}

void TMainForm::btnPickColorClick()
{
    FPicker.SetPickMode(btnPickColor->IsChecked());
}

void TMainForm::HelpContext(int topic)
{
    if (FState.HelpRouter != nullptr) // not after a start-up that failed before it
        FState.HelpRouter->HelpContext(topic);
}

void TMainForm::aF1HelpExecute()
{
    HelpContext(MainWindowTopic);
}

void TMainForm::btnHelpClick()
{
    if (FState.HelpRouter != nullptr)
        FState.HelpRouter->HelpCommand(THelpRouter::ContentsCommand, 0);
}

// The update's log and downloads go to the current folder, which stays the program's own afterwards.
void TMainForm::btnCheckUpdatesClick()
{
    QDir::setCurrent(FState.ProgramFolder);
    if (FCheckForUpdates(this, QDir::cleanPath(FState.ProgramFolder)))
        QApplication::closeAllWindows(); // as a user would: the settings are saved
}

void TMainForm::Picked(int color)
{
    FTable.SetField(TField::PickColor, color);
}

// Choosing the project that is current already does nothing.
void TMainForm::ProjectChosen(qint64 id)
{
    FTable.LocateByID(id);
}

void TMainForm::BuildGenList()
{
    const TProject project = ProjectAsShown();
    FState.GenList.clear(); // also if there can be no new one
    FState.GenList = Corvadine::BuildGenList(
        PlatformsOf(project), TwoxSizeOf(project), FControls.ImageEnViewSplash->Image().size());
}

TOutputRenderer TMainForm::TakeJob() const
{
    TRenderSources sources { std::make_shared<TRenderSource>(FControls.ImageEnViewIcon->Image()), nullptr };
    if (!FControls.ImageEnViewSplash->IsEmpty())
        sources.Launch = std::make_shared<TRenderSource>(FControls.ImageEnViewSplash->Image());
    return { std::move(sources), JobOf(ProjectAsShown()).Settings };
}

// The options count as the editors show them: a colour that was only previewed, or a slider not left yet.
TProject TMainForm::ProjectAsShown() const
{
    TProject project = FTable.Current();
    if (FControls.cbBackground->HasValue())
        project.PickColor = FControls.cbBackground->Value();
    project.Compression = FControls.cbCompression->Value();
    project.TwoxSize = FControls.cb2xWidth->Value();
    return project;
}

void TMainForm::tblProjectsAfterScroll()
{
    FIntake.ShowCurrentProject();
}

// The command-line program may have written to the same database while the user was away.
void TMainForm::FollowOtherPrograms()
{
    FHasMissedActivation = false;
    const TProject before = FTable.Current();
    try {
        FTable.Refresh();
    } catch (const TError&) {
        return; // locked, for instance; the user has asked for nothing, and next time it may be readable
    }
    const TProject after = FTable.Current();
    if (after.ID != before.ID) // the table has announced it; who looks now must not think it the old one
        FControls.cbProjects->SetValue(FTable.IsEmpty() ? std::nullopt : std::optional<qint64>(after.ID));
    else if (ShowsOtherImages(before, after))
        Guarded([this] { FIntake.ShowCurrentProject(); });
}

// Every command and handler runs in here: an error that nobody else handles shows its own text.
void TMainForm::Guarded(const std::function<void()>& action)
{
    ++FGuardedDepth;
    RunReporting(action, [this](const QString& text) { FPrompts.ShowError(text); });
    --FGuardedDepth;
    if (FHasMissedActivation && isVisible() && !IsBusy())
        FollowOtherPrograms();
}

// Whether a command is under way or a dialog open, over which no row may change.
bool TMainForm::IsBusy() const
{
    return FGuardedDepth > 0 || QApplication::activeModalWidget() != nullptr;
}

TCommandState TMainForm::CommandState() const
{
    const TProject project = FTable.Current();
    return {
        .TableOpen = FTable.IsOpen(),
        .HasRow = !FTable.IsEmpty(),
        .Editing = FTable.IsEditing(),
        .CanModify = FTable.CanModify(),
        .EditorFocused = TFieldEditor::IsFieldEditor(QApplication::focusWidget()),
        .HasProjectFile = !project.ProjectFile.isEmpty(),
        .HasOutputFolder = !project.OutputFolder.isEmpty(),
        .HasBackground = FControls.cbBackground->HasValue(),
        .FilesGenerated = FState.FilesGenerated,
        .Running = FState.Running,
    };
}

void TMainForm::UpdateCommands()
{
    aGenerateUpdate();
    FActions.UpdateAll();
}

// The editors' groups follow the table together with the command whose options they hold.
void TMainForm::aGenerateUpdate()
{
    FControls.layGroupPlatforms->setEnabled(!FTable.IsEmpty());
    for (TCaptionGroup* group :
        { FControls.layGroupProjectOptions, FControls.layGroupCurrentProject, FControls.layGroupFilter })
        group->setEnabled(FControls.layGroupPlatforms->isEnabled());
}

void TMainForm::closeEvent(QCloseEvent* event)
{
    FClosesAfterRun = FState.Running;
    if (FClosesAfterRun)
        FRun.Stop(); // after the image it is at
    event->setAccepted(!FClosesAfterRun);
}

// The user may change between light and dark, or the projects from elsewhere, while the program runs.
void TMainForm::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        TakeContentColor();
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
        FHasMissedActivation = IsBusy();
        if (!FHasMissedActivation)
            FollowOtherPrograms();
    }
}

// As a copy: a move would let the file manager delete its file.
void TMainForm::dragEnterEvent(QDragEnterEvent* event)
{
    if (!MayAddProject(CommandState()) || DraggedProjectFile(*event->mimeData()).isEmpty())
        return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void TMainForm::dropEvent(QDropEvent* event)
{
    const QString file = DraggedProjectFile(*event->mimeData());
    if (file.isEmpty() || !MayAddProject(CommandState()))
        return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
    Guarded([&] { AddProject(file); });
}

} // namespace Corvadine
