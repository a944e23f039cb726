#pragma once

#include "generate/OutputRenderer.h"

#include <QString>

#include <functional>

class QProgressBar;
class QWidget;

namespace Corvadine {

class TPrompts;
class TThumbnailView;
struct TMainState;

// The generation run of the window: one output after the other on the window's own thread, each shown as soon
// as it is written; the window stays alive in between. What is rendered, from what and into which folder is
// fixed at the start. Files written before a failure stay.
class TWindowRun {
public:
    struct TParts {
        TThumbnailView& MView;
        QProgressBar& PB;
        QWidget& Ribbon;
        TPrompts& Prompts;
        TMainState& State;
        std::function<void()> BuildGenList;
        // Settings and sources of the current project as the window shows them. May throw TError.
        std::function<TOutputRenderer()> TakeJob;
    };

    explicit TWindowRun(TParts parts);

    // Throws TError for whatever fails once the output folder is there; cursor and ribbon are restored then
    // too.
    void Execute(const QString& outputFolder);

    // Ends the run under way after the output it is at.
    void Stop() { FStopped = true; }

    // Another project is shown: the run goes on, but no longer touches what the window shows.
    void Leave() { FLeft = true; }

private:
    void GenerateAll();
    void GenerateImage(TOutputRenderer& renderer, const TGenRec& record);
    void GenerateMainIcon(TOutputRenderer& renderer);
    void Write(TOutputRenderer& renderer, const TGenRec& record, const QString& info);

    TParts FParts;
    bool FStopped = false;
    bool FLeft = false;
};

} // namespace Corvadine
