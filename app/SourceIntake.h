#pragma once

#include "store/Project.h"

#include <QString>

namespace Corvadine {

class TImageView;
struct TMainState;

// The two source images of the current project. The user can choose, drop and remove an image. The change
// waits in the row until the row is saved. When another project becomes current, its source images and the
// images in its output folder are shown.
class TSourceIntake {
public:
    // One source image: the field that has its path, and the view that shows it.
    struct TSource {
        TField Field;
        TImageView& View;
    };

    // `state` must outlive this object.
    explicit TSourceIntake(TMainState& state);

    const TSource Icon;
    const TSource Splash;

    // Asks the user for a file and passes it to Take(). The picker opens in the folder of the current source
    // image. If that folder is missing, the picker opens in the folder of the project file.
    void Choose(const TSource& source);

    // Makes `file` the source image, even if the file does not decode.
    void Take(const TSource& source, const QString& file);

    // Passes the dropped `file` to Take(). If ReadImageHeader() throws a TError, changes nothing and throws
    // this TError.
    void TakeDropped(const TSource& source, const QString& file);

    void Remove(const TSource& source);

    void ShowCurrentProject();

private:
    void ShowOutputs(const QString& folder);

    TMainState& FState;
};

} // namespace Corvadine
