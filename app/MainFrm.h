#pragma once

#include "app/CommandRules.h"
#include "app/MainControls.h"
#include "app/MainState.h"
#include "app/SourceIntake.h"
#include "app/WindowRun.h"
#include "app/WindowSettings.h"
#include "app/WindowUpdate.h"
#include "store/ProjectStore.h"
#include "store/ProjectsTable.h"
#include "widgets/ColorPicker.h"

#include <QMainWindow>

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace Corvadine {

class TPrompts;

// The program's window: the ribbon, the editors of the current project, its two source images, and the
// thumbnails of its output folder. The window makes its parts and connects them. The rules are elsewhere:
// CommandRules.h, SourceIntake.h, WindowRun.h and the libraries.
class TMainForm : public QMainWindow {
    Q_OBJECT

public:
    // All of the program's own files lie in `programFolder`. `prompts` must outlive the window.
    TMainForm(const QString& programFolder, TPrompts& prompts);

    // Saves the settings and closes the table and the database. Edits that are not saved are lost.
    ~TMainForm() override;

    // Opens the store, reads the settings, shows the remembered project or else the first, and sets up the
    // help. An error is shown, and the start-up ends. If the database cannot be opened, the window tries to
    // open it each time the window becomes active. When the database is open, the window finishes the
    // start-up. Call this once.
    void StartUp();

    // Opens the help page with the number `topic`. Does nothing before the help is set up.
    void HelpContext(int topic);

    // Makes the window call `check` in place of CheckForUpdates(), so that tests need no network.
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
    QAction* AddCommand(const QString& caption, const QIcon& icon, const QKeySequence& shortcut,
        TCommandRule rule, const std::function<void()>& execute);
    void MakeCommands();
    void Connect();

    bool RunSteps(const std::vector<std::function<void()>>& steps);
    void FinishStartUp();
    void Reconnect();
    void ShowVersion();
    void ApplyContentColor();
    void TakeContentColor();
    void OpenStore();
    void SetUpHelp();

    void aAddProjectExecute();
    void AddProject(const QString& projectFile);
    void aGenerateExecute();
    void aProjectExecute();
    void aClearExecute();
    void aF1HelpExecute();
    void btnHelpClick();
    void btnPickColorClick();
    void btnCheckUpdatesClick();
    void tblProjectsAfterScroll();
    void FollowOtherPrograms();

    TCommandState CommandState() const;
    void UpdateCommands();
    bool Guarded(const std::function<void()>& action);
    bool IsBusy() const;

    TPrompts& FPrompts;
    bool FClosesAfterRun = false;
    int FGuardedDepth = 0;             // number of Guarded() calls under way
    bool FHasMissedActivation = false; // the window became active while IsBusy()
    bool FIsUnconnected = false;       // the start-up ended because the database could not be opened
    std::function<bool(QWidget*, const QString&)> FCheckForUpdates = CheckForUpdates;
    std::unique_ptr<TProjectStore> FStore;
    TProjectsTable FTable;
    TMainControls FControls;
    TMainState FState;
    struct TCommand {
        QAction* Action;
        TCommandRule Rule;
    };
    std::vector<TCommand> FCommands;
    QToolButton* btnPickColor = nullptr;
    TSourceIntake FIntake;
    TWindowRun FRun;
    TWindowSettings FSettings;
    TColorPicker FPicker;
};

} // namespace Corvadine
