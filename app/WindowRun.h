#pragma once

#include "generate/OutputRenderer.h"

#include <QString>

#include <functional>
#include <vector>

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
        std::function<QString()> OutputFolder; // the current project's
        std::function<void()> BuildGenList;
        // Settings and sources of the current project as the window shows them. May throw TError.
        std::function<TOutputRenderer()> TakeJob;
    };

    explicit TWindowRun(TParts parts);

    // Generates into the current project's output folder. Throws TError for whatever fails once that is
    // there; cursor and ribbon are restored then too.
    void Execute();

    // Ends the run under way after the output it is at.
    void Stop() { FStopped = true; }

    // The thumbnails become another project's: the run goes on, but adds no more to them.
    void Leave() { FLeft = true; }

private:
    void GenerateAll();
    void FinishView();
    void ShowAfterReturn(const TGenSettings& settings, const std::vector<TGenRec>& list);
    void GenerateImage(TOutputRenderer& renderer, const TGenRec& record);
    void GenerateMainIcon(TOutputRenderer& renderer);
    void Write(TOutputRenderer& renderer, const TGenRec& record, const QString& info);

    TParts FParts;
    bool FStopped = false;
    bool FLeft = false;
};

} // namespace Corvadine
