#pragma once

namespace Corvadine {

// The state of the window from which the rules below decide which commands are enabled.
struct TCommandState {
    bool TableOpen = false;
    bool HasRow = false;        // there is a current row, saved or new
    bool Editing = false;       // the current row has unsaved changes or is new
    bool CanModify = false;     // the database can be written
    bool EditorFocused = false; // the keyboard focus is in an editor of a project's field
    bool HasProjectFile = false;
    bool HasOutputFolder = false;
    bool HasBackground = false; // the color box shows a color
    bool FilesGenerated = false;
    bool Running = false; // a generation run is under way
};

// A rule returns whether its command may be carried out in this state.
using TCommandRule = bool (*)(const TCommandState&);

// The rules of the commands. During a run no command may be carried out.
constexpr bool MayAddProject(const TCommandState& state)
{
    return !state.Running && !state.Editing;
}

constexpr bool MaySave(const TCommandState& state)
{
    return !state.Running && state.TableOpen && state.Editing;
}

// The command deletes the current row, but only while an editor of the row has the keyboard focus.
constexpr bool MayDeleteProject(const TCommandState& state)
{
    return !state.Running && state.EditorFocused && state.TableOpen && state.HasRow && state.CanModify;
}

constexpr bool MayGenerate(const TCommandState& state)
{
    return !state.Running && state.HasBackground && state.HasOutputFolder && state.HasRow && !state.Editing;
}

constexpr bool MayUpdateProject(const TCommandState& state)
{
    return !state.Running && state.HasRow && state.FilesGenerated && state.HasProjectFile && !state.Editing;
}

constexpr bool MayClear(const TCommandState& state)
{
    return !state.Running && state.HasRow && state.HasOutputFolder && !state.Editing;
}

// The rule of all other commands: image choice, help, color picking and update check.
constexpr bool MayStart(const TCommandState& state)
{
    return !state.Running;
}

} // namespace Corvadine
