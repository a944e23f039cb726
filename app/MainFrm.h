#pragma once

#include "app/CommandRules.h"
#include "app/FormAction.h"
#include "app/MainControls.h"
#include "app/MainState.h"
#include "app/SourceIntake.h"
#include "app/WindowRun.h"
#include "app/WindowSettings.h"
#include "app/WindowUpdate.h"
#include "images/ColorPicker.h"
#include "store/ProjectStore.h"
#include "store/ProjectsTable.h"

#include <QMainWindow>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace Corvadine {

class TPrompts;

// The program's window: the ribbon, the editors of the current project, its two source images, and the
// thumbnails of its output folder. It composes smaller parts and connects them; what they may do is decided
// in CommandRules.h, SourceIntake.h, WindowRun.h and the libraries below.
class TMainForm : public QMainWindow {
    Q_OBJECT

public:
    // All of the program's own files lie in `programFolder`. `prompts` must outlive the window.
    TMainForm(const QString& programFolder, TPrompts& prompts);

    // Saves the settings, closes the table and the database; edits that have not been saved are lost.
    ~TMainForm() override;

    // Brings up the store, the settings and the first project, step by step; an error is shown and ends the
    // list. Call once.
    void StartUp();

    // Rebuilds the generation list from what the editors and the launch view show. Throws TError when an
    // option has no value.
    void BuildGenList();

    // Opens the help at a numbered topic; does nothing when there is no help to be had.
    void HelpContext(int topic);

    // For tests, in place of CheckForUpdates().
    void SetUpdateCheck(std::function<bool(QWidget*, const QString&)> check)
    {
        FCheckForUpdates = std::move(check);
    }

    const TMainState& State() const { return FState; }
    const TMainControls& Controls() const { return FControls; }
    TProjectsTable& tblProjects() { return FTable; }

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void MakeCommands();
    void Connect();

    void ShowVersion();
    void ApplyContentColor();
    void TakeContentColor();
    void OpenStore();
    void SetUpHelp();

    void aAddProjectExecute();
    void AddProject(const QString& projectFile);
    void aGenerateExecute();
    void aGenerateUpdate();
    void aProjectExecute();
    void aClearExecute();
    void aF1HelpExecute();
    void btnHelpClick();
    void btnPickColorClick();
    void btnCheckUpdatesClick();
    void tblProjectsAfterScroll();
    void FollowOtherPrograms();
    void ProjectChosen(qint64 id);
    void Picked(int color);

    TOutputRenderer TakeJob() const;
    TProject ProjectAsShown() const;
    TCommandState CommandState() const;
    void UpdateCommands();
    void Guarded(const std::function<void()>& action);
    bool IsBusy() const;

    TPrompts& FPrompts;
    TMainState FState;
    bool FClosesAfterRun = false;
    int FGuardedDepth = 0;             // how many commands and handlers are under way
    bool FHasMissedActivation = false; // it came while a command was under way
    std::function<bool(QWidget*, const QString&)> FCheckForUpdates = CheckForUpdates;
    std::unique_ptr<TProjectStore> FStore;
    TProjectsTable FTable;
    TMainControls FControls;
    TFormActions FActions;
    TFormAction* btnPickColor = nullptr;
    TSourceIntake FIntake;
    TWindowRun FRun;
    TWindowSettings FSettings;
    TColorPicker FPicker;
};

} // namespace Corvadine
