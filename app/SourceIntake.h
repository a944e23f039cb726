#pragma once

#include "store/Project.h"

#include <QString>

#include <functional>

namespace Corvadine {

class TImageView;
class TProjectsTable;
class TPrompts;
class TThumbnailView;
struct TMainState;

// The two source images of the current project: chosen, dropped, removed, and shown together with the images
// of its output folder when another project becomes current. Chosen and removed images are pending changes of
// the row.
class TSourceIntake {
public:
    struct TParts {
        TProjectsTable& Table;
        TImageView& Icon;
        TImageView& Splash;
        TThumbnailView& MView;
        TPrompts& Prompts;
        TMainState& State;
        std::function<void()> ThumbnailsReplaced; // the thumbnails are about to be another folder's, or none
        std::function<void()> BuildGenList;
    };

    explicit TSourceIntake(TParts parts);

    // Asks for a file, starting in the folder of the present one, or else beside the project file; a file
    // that does not decode is taken all the same.
    void ChooseIcon();
    void ChooseSplash();

    // Takes `file` as if it had been chosen.
    void TakeIcon(const QString& file);
    void TakeSplash(const QString& file);

    void RemoveIcon();
    void RemoveSplash();

    void ShowCurrentProject();

private:
    void Choose(TField field, TImageView& view);
    void Take(TField field, TImageView& view, const QString& file);
    void Remove(TField field, TImageView& view);
    void ShowOutputs(const QString& folder);

    TParts FParts;
};

} // namespace Corvadine
