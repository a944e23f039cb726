#pragma once

namespace Corvadine {

// What the enabling rules of the window's commands look at.
struct TCommandState {
    bool TableOpen = false;
    bool HasRow = false;        // there is a current row, saved or being inserted
    bool Editing = false;       // it has unsaved changes, or is new
    bool CanModify = false;     // the database can be written
    bool EditorFocused = false; // the keyboard focus is in an editor of a project's field
    bool HasProjectFile = false;
    bool HasOutputFolder = false;
    bool HasBackground = false; // the colour box shows a value
    bool FilesGenerated = false;
    bool Running = false; // a generation run is under way
};

// The rules, one a command. During a run no command of the ribbon can be started.
constexpr bool MayAddProject(const TCommandState& state)
{
    return !state.Running && !state.Editing;
}

constexpr bool MaySave(const TCommandState& state)
{
    return !state.Running && state.TableOpen && state.Editing;
}

// Acts on the focused editor's project, as a data control's own command does; hence the focus.
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

// Image choice, help, colour picking and the update check have no rule of their own.
constexpr bool MayStart(const TCommandState& state)
{
    return !state.Running;
}

} // namespace Corvadine
