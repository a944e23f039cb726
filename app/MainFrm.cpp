#include "app/MainFrm.h"

#include "app/ColorBox.h"
#include "app/FieldEditor.h"
#include "app/ProjectLookup.h"
#include "app/WindowPlacement.h"
#include "base/Error.h"
#include "base/FileVersion.h"
#include "base/Files.h"
#include "base/PathRules.h"
#include "dialogs/Prompts.h"
#include "generate/ClearFiles.h"
#include "generate/ClearRule.h"
#include "project/Backups.h"
#include "project/ProjectPaths.h"
#include "project/ProjectUpdater.h"
#include "support/help/HelpRouter.h"
#include "widgets/CaptionGroup.h"
#include "widgets/FileDrop.h"
#include "widgets/Icons.h"
#include "widgets/IdleUpdate.h"
#include "widgets/ImageView.h"
#include "widgets/Ribbon.h"
#include "widgets/Theme.h"
#include "widgets/ThumbnailView.h"
#include "widgets/WaitCursor.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProgressBar>
#include <QToolButton>

#include <algorithm>

namespace Corvadine {

namespace {

const QString DesignedCaption = u"FMX Corvadine"_s;
constexpr std::chrono::seconds DatabasePatience { 1 }; // how long a locked database may block the window
constexpr int MainWindowTopic = 90;                    // see help/Corvadine.hhp

// Returns the path of the dragged file if it is a project file; otherwise an empty text.
QString OfferedProjectFile(const QDropEvent& event)
{
    const QString file = OfferedFile(event);
    return IsProjectFileName(file) ? file : QString();
}

// Returns whether a change of `fields` may change the images that the views show.
bool ConcernImages(const TFieldSet& fields)
{
    return fields.contains(TField::IconImageName) || fields.contains(TField::SplashImageName)
        || fields.contains(TField::OutputFolder);
}

} // namespace

TMainForm::TMainForm(const QString& programFolder, TPrompts& prompts)
    : FPrompts(prompts)
    , FControls(MakeMainControls(*this, FTable, [this](const QString& text) { FPrompts.ShowError(text); }))
    , FState { FTable, FControls, prompts }
    , FIntake(FState)
    , FRun(FState)
    , FSettings(*this, FState)
    , FPicker(FControls.ImageEnViewIcon, FControls.ImageEnViewSplash, this)
{
    FState.ProgramFolder = WithTrailingDelimiter(programFolder);
    // The path is set before StartUp(), because backups go to this folder even if StartUp() fails before
    // creating it.
    FState.BackupFolder = WithTrailingDelimiter(FState.OwnFile(BackupFolderName));
    setWindowTitle(DesignedCaption);
    setAcceptDrops(true);
    constexpr QSize ClientArea(1008, 729);
    resize(ClientArea);
    Center(*this);
    MakeCommands();
    Connect();
    new TIdleUpdate(this, [this] { UpdateCommands(); });
}

TMainForm::~TMainForm()
{
    Guarded([this] { FSettings.Save(); });
    FTable.Close();
    delete takeCentralWidget(); // the controls refer to FTable and must not outlive it
}

void TMainForm::StartUp()
{
    const bool isPrepared = RunSteps({
        [this] { ShowVersion(); },
        [this] { ApplyContentColor(); },
        [this] { FState.FilesGenerated = false; },
    });
    if (!isPrepared)
        return;
    FIsUnconnected = !Guarded([this] { OpenStore(); });
    if (!FIsUnconnected)
        FinishStartUp();
}

// The steps of the start-up that need the database.
void TMainForm::FinishStartUp()
{
    RunSteps({
        [this] { QFile::remove(FState.OwnFile("Corvadine.CAB")); }, // left over from an update
        [this] { CreateFolder(FState.BackupFolder); },
        [this] { FSettings.Read(); },
        [this] { FSettings.ReopenProject(); },
        [this] { FControls.PB->setFocus(); }, // so that no editor has the focus
        [this] { SetUpHelp(); },
    });
}

// Runs the steps up to the first one that fails. Returns whether all steps succeeded.
bool TMainForm::RunSteps(const std::vector<std::function<void()>>& steps)
{
    return std::ranges::all_of(steps, [this](const auto& step) { return Guarded(step); });
}

// Makes an action that calls `execute` if `rule` allows the command. Each click evaluates the rule again,
// because the state may have changed since the button was enabled.
QAction* TMainForm::AddCommand(const QString& caption, const QIcon& icon, const QKeySequence& shortcut,
    TCommandRule rule, const std::function<void()>& execute)
{
    auto* action = new QAction(icon, caption, this);
    action->setShortcut(shortcut);
    connect(action, &QAction::triggered, this, [this, action, execute] {
        UpdateCommands();
        if (action->isEnabled())
            Guarded(execute);
    });
    FCommands.push_back({ action, rule });
    return action;
}

// Makes the ribbon's buttons, group by group. Their rules are in CommandRules.h.
void TMainForm::MakeCommands()
{
    const auto addButton = [this](const char* group, const char* caption, const char* icon,
                               const QKeySequence& shortcut, TCommandRule rule,
                               const std::function<void()>& execute) {
        QAction* action =
            AddCommand(QLatin1String(caption), CommandIcon(QLatin1String(icon)), shortcut, rule, execute);
        return FControls.dxRibbon1->AddButton(QLatin1String(group), *action);
    };
    addButton("Project", "&Add Project", "add-project", QKeySequence::New, MayAddProject,
        [this] { aAddProjectExecute(); });
    addButton("Project", "&Save Changes", "save", QKeySequence::Save, MaySave, [this] { FTable.Post(); });
    addButton(
        "Project", "&Cancel Changes", "cancel", Qt::CTRL | Qt::Key_R, MaySave, [this] { FTable.Cancel(); });
    addButton("Project", "&Delete Project", "delete-project", Qt::CTRL | Qt::SHIFT | Qt::Key_Delete,
        MayDeleteProject, [this] { FTable.Delete(); });
    addButton("Load Images", "&Icon Image", "icon-image", Qt::CTRL | Qt::Key_I, MayStart,
        [this] { FIntake.Choose(FIntake.Icon); });
    addButton("Load Images", "&Launch Image", "launch-image", Qt::CTRL | Qt::Key_L, MayStart,
        [this] { FIntake.Choose(FIntake.Splash); });
    addButton("General", "&Help", "help", {}, MayStart, [this] { btnHelpClick(); });
    btnPickColor = addButton("General", "&Pick Color", "pick-color", Qt::CTRL | Qt::Key_P, MayStart,
        [this] { btnPickColorClick(); });
    btnPickColor->defaultAction()->setCheckable(true);
    addButton("General", "Del All I&mages", "delete-all", {}, MayClear, [this] { aClearExecute(); });
    addButton(
        "General", "Check &for Update", "check-update", {}, MayStart, [this] { btnCheckUpdatesClick(); });
    addButton(
        "Output", "&Generate", "generate", Qt::CTRL | Qt::Key_G, MayGenerate, [this] { aGenerateExecute(); });
    addButton("Output", "&Update Project", "update-project", Qt::CTRL | Qt::SHIFT | Qt::Key_G,
        MayUpdateProject, [this] { aProjectExecute(); });

    // F1 opens the page about this window. The Help button opens the contents.
    addAction(AddCommand(u"Help"_s, {}, Qt::Key_F1, MayStart, [this] { aF1HelpExecute(); }));
}

void TMainForm::Connect()
{
    FTable.SetDeleteConfirmation([this] { return FPrompts.Confirm(u"Delete Project?"_s); });
    connect(&FTable, &TProjectsTable::CurrentChanged, this,
        [this] { Guarded([this] { tblProjectsAfterScroll(); }); });
    connect(&FTable, &TProjectsTable::FoundChanged, this, [this](const TFieldSet& fields) {
        if (ConcernImages(fields)) // otherwise a run would put the former images into the new folder
            Guarded([this] { FIntake.ShowCurrentProject(); });
    });
    connect(FControls.cbProjects, &TProjectLookup::ValueChosen, this,
        [this](qint64 id) { Guarded([&] { FTable.LocateByID(id); }); });
    connect(FControls.btnRemoveIcon, &QToolButton::clicked, this,
        [this] { Guarded([this] { FIntake.Remove(FIntake.Icon); }); });
    connect(FControls.btnRemoveSplash, &QToolButton::clicked, this,
        [this] { Guarded([this] { FIntake.Remove(FIntake.Splash); }); });
    // The connections are queued, so that a message is shown after the drop. During the drop a message would
    // block the program from which the file was dragged.
    connect(
        FControls.ImageEnViewIcon, &TImageView::FileDropped, this,
        [this](const QString& file) { Guarded([&] { FIntake.TakeDropped(FIntake.Icon, file); }); },
        Qt::QueuedConnection);
    connect(
        FControls.ImageEnViewSplash, &TImageView::FileDropped, this,
        [this](const QString& file) { Guarded([&] { FIntake.TakeDropped(FIntake.Splash, file); }); },
        Qt::QueuedConnection);
    connect(&FPicker, &TColorPicker::Previewed, FControls.cbBackground, &TColorBox::ShowColor);
    connect(&FPicker, &TColorPicker::PickModeEnded, this, [this] { btnPickColor->setChecked(false); });
    connect(&FPicker, &TColorPicker::Picked, this,
        [this](int color) { Guarded([&] { FTable.SetField(TField::PickColor, color); }); });
}

void TMainForm::ShowVersion()
{
    // The file version has four numbers, but releases are known by the first three.
    QString version = FileVersion();
    version.chop(2);
    setWindowTitle(u"%1 (%2)"_s.arg(DesignedCaption, version));
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
    FStore = std::make_unique<TProjectStore>(FState.OwnFile(ProjectDatabaseName), DatabasePatience);
    FTable.Open(*FStore);
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
    Guarded([this] { FRun.Execute(); }); // guarded here, so that an error is shown before the window closes
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
        images.Images.push_back({ record.ID, ImageFileName(record.ID) });
    ShowWaitCursor();
    QApplication::processEvents(QEventLoop::ExcludeUserInputEvents); // a second click must not update twice
    // If the update throws, the wait cursor stays until the next update or run ends. This is on purpose,
    // because older releases did the same.
    TBackups backups(FState.BackupFolder, FState.OwnFile(ProjectDatabaseName), DatabasePatience);
    const TUpdateResult result =
        UpdateProject(images, { backups, QDateTime::currentDateTime(), TBackupPolicy::BestEffort });
    ShowNormalCursor();
    FPrompts.Inform(result.ClosingMessage());
}

void TMainForm::aClearExecute()
{
    const TProject project = FTable.Current();
    const QString& folder = project.OutputFolder;
    if (!FolderExists(folder))
        return;
    RefuseToClear(project, { FState.ProgramFolder, FState.ProgramFolder });
    if (!FPrompts.Confirm(u"This will delete all images in folder %1 Do you wish to proceed?"_s.arg(folder)))
        return;
    const int count = DeleteFilesByMask(folder, AllFilesMask);
    FControls.MView->Clear();
    FPrompts.Inform(u"%1 Images Deleted"_s.arg(count));
}

void TMainForm::btnPickColorClick()
{
    FPicker.SetPickMode(btnPickColor->isChecked());
}

void TMainForm::HelpContext(int topic)
{
    if (FState.HelpRouter != nullptr)
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

// Makes the program folder the current folder of the process, and does not change it back. The update itself
// does not depend on the current folder, because it uses full paths.
void TMainForm::btnCheckUpdatesClick()
{
    QDir::setCurrent(FState.ProgramFolder);
    if (FCheckForUpdates(this, QDir::cleanPath(FState.ProgramFolder)))
        QApplication::closeAllWindows(); // the program then ends, and ~TMainForm() saves the settings
}

void TMainForm::tblProjectsAfterScroll()
{
    FIntake.ShowCurrentProject();
}

// Reads the database again. The command-line program may have changed the database while this window was
// not active.
void TMainForm::FollowOtherPrograms()
{
    FHasMissedActivation = false;
    if (FIsUnconnected) {
        Reconnect();
        return;
    }
    const TProject before = FTable.Current();
    try {
        FTable.Refresh();
    } catch (const TError&) {
        return; // no message: the database may be locked only at this moment
    }
    const TProject after = FTable.Current();
    if (!IsSameProject(before, after)) // CurrentChanged has updated the rest; the lookup does not follow rows
        FControls.cbProjects->SetValue(FTable.IsEmpty() ? std::nullopt : std::optional<qint64>(after.ID));
}

// Opens the database, and then finishes the start-up. A further failure shows no message. Closing a message
// makes the window active, and so the next attempt would show the next message.
void TMainForm::Reconnect()
{
    try {
        OpenStore();
    } catch (const TError&) {
        return;
    }
    FIsUnconnected = false;
    FinishStartUp();
}

// Runs a command or handler. Shows the text of an error, because exceptions must not pass through Qt. Returns
// whether there was no error. If the window became active during the command, reads the database again.
bool TMainForm::Guarded(const std::function<void()>& action)
{
    bool hasSucceeded = false;
    ++FGuardedDepth;
    try {
        action();
        hasSucceeded = true;
    } catch (const std::exception& error) {
        FPrompts.ShowError(QString::fromUtf8(error.what()));
    }
    --FGuardedDepth;
    if (FHasMissedActivation && isVisible() && !IsBusy())
        FollowOtherPrograms();
    return hasSucceeded;
}

// Returns whether a command is under way or a dialog is open. Meanwhile the current row must not change.
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

// Enables the commands by their rules, and the editors' groups while there is a current row.
void TMainForm::UpdateCommands()
{
    const TCommandState state = CommandState();
    for (const auto& [action, rule] : FCommands)
        action->setEnabled(rule(state));
    for (TCaptionGroup* group : { FControls.layGroupPlatforms, FControls.layGroupProjectOptions,
             FControls.layGroupCurrentProject, FControls.layGroupFilter })
        group->setEnabled(state.HasRow);
}

void TMainForm::closeEvent(QCloseEvent* event)
{
    FClosesAfterRun = FState.Running;
    if (FClosesAfterRun)
        FRun.Stop(); // the run ends after this image; aGenerateExecute() then closes the window
    event->setAccepted(!FClosesAfterRun);
}

// Follows a change of the desktop between light and dark. When the window becomes active, follows what other
// programs have changed in the database.
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

// Qt passes a drag to the window if the control under the pointer does not accept the drag.
void TMainForm::dragEnterEvent(QDragEnterEvent* event)
{
    if (MayAddProject(CommandState()) && !OfferedProjectFile(*event).isEmpty())
        AcceptCopy(*event);
}

void TMainForm::dropEvent(QDropEvent* event)
{
    const QString file = OfferedProjectFile(*event);
    if (file.isEmpty() || !MayAddProject(CommandState()))
        return;
    AcceptCopy(*event);
    Guarded([&] { AddProject(file); });
}

} // namespace Corvadine
