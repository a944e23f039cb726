#pragma once

#include "support/UpdateLog.h"
#include "support/UpdateTypes.h"

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
    static constexpr bool BillBoardStretch = true; // to the height of the pages
    static constexpr QLatin1String FontName { "Verdana" };
    static constexpr int FontPoints = 9; // bold, in the colour of window text
};

// The dialog that leads through an update: looks for one, offers what is newer, downloads what is ticked,
// puts it into place, and says how it went. It only shows and asks; TUpdateEngine and TUpdateInstaller do the
// work, and every step goes to the log. Run it with exec(), whose event loop lives on while the network is
// waited for. Cancel, Escape and the window's close box do the same on every page.
class TUpdateWizard : public QDialog {
    Q_OBJECT

public:
    // What the wizard works with; all of it must live longer.
    struct TParts {
        TUpdateEngine& WebUpdate;
        QString Executable;                // of the running program, absolute
        std::function<void()> StartHelper; // for updates that replace it; may throw TError
    };

    TUpdateWizard(TParts parts, QWidget* owner);
    ~TUpdateWizard() override;

    // Whether the helper was started and waits for the program to end, so the caller has to see to that.
    bool EndsProgram() const { return FEndsProgram; }

    void reject() override;

    QLabel* const Heading;
    QStackedWidget* const Pages;
    QTreeWidget* const News;
    QPlainTextEdit* const Description;
    QLabel* const Note; // what the pages without controls of their own say
    QProgressBar* const ProgressBar;
    QPushButton* const btnNext;
    QPushButton* const btnCancel; // or Close, once there is nothing to cancel

protected:
    void showEvent(QShowEvent* event) override;

private:
    // The button that leads on, if the page has one.
    struct TNext {
        QString Caption;
        std::function<void()> Execute;
    };

    void LayOut();
    QWidget* MakeNewsPage();
    QWidget* MakeNotePage();
    void Connect();

    void Check();
    void Checked(const std::vector<TUpdateItem>& items);
    void Download();
    void Progress(qint64 done, qint64 total);
    void Downloaded(const TStagedUpdate& update);
    void Install(const TStagedUpdate& update);
    void HandOver();
    void Fail(const QString& step, const QString& text);
    void Cancelled();

    void ShowNews(const std::vector<TUpdateItem>& items);
    std::vector<std::size_t> Chosen() const;
    void ShowNote(const QString& heading, const QString& text);
    void ShowBusy(const QString& heading, const QString& text);
    void SetButtons(TNext next, const QString& cancelCaption);
    void DropStaged();

    TParts FParts;
    TUpdateLog FLog;
    std::function<void()> FNext;
    QString FStep; // that runs, for the log
    bool FStarted = false;
    bool FHasStaged = false;
    bool FInstalling = false; // nothing can be cancelled or closed
    bool FEndsProgram = false;
};

} // namespace Corvadine
