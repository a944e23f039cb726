#pragma once

#include <QString>

namespace Corvadine {

class TOutputRenderer;
struct TMainState;
struct TOutput;

// The generation run of the window. The run renders one output after the other on the window's own thread. It
// shows each output when the file of the output is written. Between two outputs it handles events. Settings,
// sources and output folder are fixed at the start. Files written before a failure stay.
class TWindowRun {
public:
    // `state` must outlive this object.
    explicit TWindowRun(TMainState& state) : FState(state) { }

    // Generates into the current project's output folder, and creates the folder if it is missing. If the
    // folder cannot be created, shows a message and returns. Throws TError for any later failure. Always
    // restores the cursor and the ribbon.
    void Execute();

    // Ends the run after the output that is being rendered.
    void Stop() { FStopped = true; }

private:
    void GenerateAll();
    void ShowAfterReturn(const TOutputRenderer& renderer);
    void FinishView();
    void GenerateImage(TOutputRenderer& renderer, const TOutput& output, const QString& info = {});
    void GenerateMainIcon(TOutputRenderer& renderer, const TOutput& output);

    TMainState& FState;
    bool FStopped = false;
};

} // namespace Corvadine
