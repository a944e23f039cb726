#pragma once

#include "support/update/rules/StagedUpdate.h"

#include <QDialog>

#include <cstddef>
#include <functional>
#include <vector>

class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QStackedWidget;
class QTreeWidget;

namespace Corvadine {

class TUpdateEngine;

// The product's settings of the wizard, all in one place.
struct TUpdateWizardSettings {
    static constexpr bool AutoStart = true; // the check begins when the wizard is shown, without a click
    static constexpr QLatin1String Caption { "Corvadine Update" };
    static constexpr QSize BillBoard { 164, 314 }; // the picture at the side
    static constexpr bool BillBoardStretch = true; // the picture is stretched to the height of the pages
    static constexpr QLatin1String FontName { "Verdana" };
    static constexpr int FontPoints = 9; // the font is bold and has the color of window text
};

// The dialog that leads the user through an update. It looks for a newer release, lists the newer files,
// downloads and installs the ticked files, and shows the result. The dialog only shows and asks.
// TUpdateEngine and TUpdateInstaller do the work. Every step is written to the log. Run the dialog with
// exec(), because the engine needs an event loop. On every page, Escape and the window's close box have the
// effect of Cancel.
class TUpdateWizard : public QDialog {
    Q_OBJECT

public:
    // The parts that the wizard uses. `WebUpdate` must outlive the wizard.
    struct TParts {
        TUpdateEngine& WebUpdate;
        QString Executable;                // absolute path of the running program
        std::function<void()> StartHelper; // called for updates that replace the program; may throw TError
    };

    TUpdateWizard(TParts parts, QWidget* owner);
    ~TUpdateWizard() override;

    // Returns whether the helper was started and waits for the end of the program. If so, the caller must end
    // the program, so that the helper can install the update.
    bool EndsProgram() const { return FEndsProgram; }

    void reject() override;

    QLabel* const Heading;
    QStackedWidget* const Pages;
    QTreeWidget* const News;
    QPlainTextEdit* const Description;
    QLabel* const Note; // the text of a page that has no controls of its own
    QProgressBar* const ProgressBar;
    QPushButton* const btnNext;
    QPushButton* const btnCancel; // "Close" when there is nothing to cancel

protected:
    void showEvent(QShowEvent* event) override;

private:
    // The button that leads to the next page. The button is hidden if Execute is empty.
    struct TNext {
        QString Caption;
        std::function<void()> Execute;
    };

    void LayOut();
    QWidget* MakeNewsPage();
    QWidget* MakeNotePage();
    void Connect();

    void Check();
    void Checked(const std::vector<TUpdateFile>& files);
    void Download();
    void Progress(qint64 done, qint64 total);
    void Downloaded(const TStagedUpdate& update);
    void Install(const TStagedUpdate& update);
    void HandOver();
    void Fail(const QString& step, const QString& text);
    void Cancelled();

    void ShowNews(const std::vector<TUpdateFile>& files);
    std::vector<std::size_t> Chosen() const;
    void ShowNote(const QString& heading, const QString& text);
    void ShowBusy(const QString& heading, const QString& text);
    void SetButtons(TNext next, const QString& cancelCaption);
    void DropStaged();

    TParts FParts;
    const TUpdateFolder FFolder;
    std::function<void()> FNext;
    QString FStep; // the running step, for the log
    bool FStarted = false;
    bool FHasStaged = false;
    bool FInstalling = false; // while true, the wizard can be neither cancelled nor closed
    bool FEndsProgram = false;
};

} // namespace Corvadine
