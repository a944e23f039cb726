// Measures the window: its start, a change of project, a whole run, and its memory after many runs. For
// comparison, also measures the same run without a window. Runs on the offscreen platform.
// usage: WindowBench ICON LAUNCH

#include "app/MainFrm.h"
#include "app/ProjectLookup.h"
#include "base/Literals.h"
#include "generate/GenerationRun.h"
#include "tools/SilentPrompts.h"
#include "widgets/Ribbon.h"
#include "widgets/Theme.h"
#include "widgets/ThumbnailView.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolButton>

#include <cstdio>

using namespace Corvadine;

namespace {

// Handles all events, and lets the event loop idle so that the enabling rules are evaluated.
void LetIdle()
{
    QEventLoop loop;
    QTimer::singleShot(20, &loop, &QEventLoop::quit);
    loop.exec();
}

// Returns the memory that this process occupies, in MiB (proc_pid_statm(5)). Assumes pages of 4 KiB.
double ResidentMiB()
{
    QFile file(u"/proc/self/statm"_s);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    constexpr double PageMiB = 4096.0 / (1024 * 1024);
    return file.readAll().split(' ').value(1).toDouble() * PageMiB;
}

void AddProject(
    TProjectsTable& table, const QString& folder, int number, const QString& icon, const QString& launch)
{
    table.Append();
    table.SetField(TField::ProjectFile, u"%1/P%2/P%2.dproj"_s.arg(folder).arg(number));
    table.SetField(TField::OutputFolder, u"%1/P%2/out"_s.arg(folder).arg(number));
    table.SetField(TField::PixelFormat, 2);
    table.SetField(TField::IconImageName, icon);
    table.SetField(TField::SplashImageName, launch);
    table.Post();
}

class TWindowBench {
public:
    TWindowBench(QString icon, QString launch) : FIcon(std::move(icon)), FLaunch(std::move(launch))
    {
        QDir().mkpath(FFolder.filePath("program"));
        TProjectStore store(FFolder.filePath("program/Corvadine.db"));
        TProjectsTable table;
        table.Open(store);
        for (int number = 1; number <= 200; ++number)
            AddProject(table, FFolder.path(), number, number <= 2 ? FIcon : QString(),
                number <= 2 ? FLaunch : QString());
    }

    void Run()
    {
        std::printf("| %-48s | %7s | %-4s |\n|%s|%s:|%s|\n", "", "", "", std::string(50, '-').c_str(),
            std::string(8, '-').c_str(), std::string(6, '-').c_str());
        MeasureStart();
        MeasureRuns();
        MeasureSwitch();
    }

private:
    static void Print(const char* what, double value, const char* unit)
    {
        std::printf("| %-48s | %7.1f | %-4s |\n", what, value, unit);
    }

    void MeasureStart()
    {
        QElapsedTimer timer;
        timer.start();
        FForm = std::make_unique<TMainForm>(FFolder.filePath("program"), FPrompts);
        FForm->StartUp();
        FForm->show();
        QApplication::processEvents();
        Print("start to painted window, 200 projects", static_cast<double>(timer.elapsed()), "ms");
    }

    double RunInWindow()
    {
        LetIdle();
        QElapsedTimer timer;
        timer.start();
        for (QToolButton* button : FForm->Controls().dxRibbon1->findChildren<QToolButton*>())
            if (button->defaultAction() != nullptr
                && button->defaultAction()->text().remove('&') == "Generate")
                button->click();
        return static_cast<double>(timer.nsecsElapsed()) / 1e6;
    }

    void MeasureRuns()
    {
        TGenJob job = JobOf(FForm->tblProjects().Current());
        double best = 1e9;
        double bestWindow = 1e9;
        double memoryAfterTwo = 0;
        for (int round = 0; round < 10; ++round) { // in turns, so that other load affects both kinds of run
            QElapsedTimer timer;
            timer.start();
            RunGeneration(job, 1);
            best = std::min(best, static_cast<double>(timer.nsecsElapsed()) / 1e6);
            bestWindow = std::min(bestWindow, RunInWindow());
            if (round == 1)
                memoryAfterTwo = ResidentMiB();
        }
        Print("whole run without a window, one thread", best, "ms");
        Print("whole run in the window, thumbnails included", bestWindow, "ms");
        Print("  the window's share", 100 * (bestWindow / best - 1), "%");
        Print("memory after two runs", memoryAfterTwo, "MiB");
        Print("memory after ten runs", ResidentMiB(), "MiB");
    }

    void MeasureSwitch()
    {
        TProjectLookup& lookup = *FForm->Controls().cbProjects;
        lookup.SetValue(2);
        LetIdle();
        RunInWindow();
        QElapsedTimer timer;
        double shown = 0;
        double filled = 0;
        constexpr int Rounds = 10;
        for (int round = 0; round < Rounds; ++round) {
            timer.start();
            lookup.SetValue(1 + round % 2);
            FForm->repaint();
            shown += static_cast<double>(timer.nsecsElapsed()) / 1e6;
            while (FForm->Controls().MView->Count() < 38 && timer.elapsed() < 5000)
                QApplication::processEvents();
            filled += static_cast<double>(timer.nsecsElapsed()) / 1e6;
        }
        Print("change of project until it is shown", shown / Rounds, "ms");
        Print("change of project until 38 thumbnails are there", filled / Rounds, "ms");
    }

    QString FIcon;
    QString FLaunch;
    QTemporaryDir FFolder;
    TSilentPrompts FPrompts;
    std::unique_ptr<TMainForm> FForm;
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: WindowBench ICON LAUNCH\n");
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    ApplyTheme(application);
    TWindowBench(QString::fromLocal8Bit(argv[1]), QString::fromLocal8Bit(argv[2])).Run();
    return 0;
}
