#pragma once

#include <QString>

#include <functional>

class QLabel;
class QMainWindow;
class QProgressBar;
class QToolButton;
class QWidget;

namespace Corvadine {

class TCaptionGroup;
class TColorBox;
class TFieldNumberEdit;
class TFieldSlider;
class TImageView;
class TProjectLookup;
class TProjectsTable;
class TRibbon;
class TThumbnailView;

// The controls of the main window that its commands use. Each is owned by its parent widget.
struct TMainControls {
    TRibbon* dxRibbon1;
    TProjectLookup* cbProjects;
    TImageView* ImageEnViewIcon;
    TImageView* ImageEnViewSplash;
    QToolButton* btnRemoveIcon;   // in the header of the icon panel
    QToolButton* btnRemoveSplash; // in the header of the launch panel
    TCaptionGroup* layGroupCurrentProject;
    TCaptionGroup* layGroupPlatforms;
    TCaptionGroup* layGroupFilter;
    TCaptionGroup* layGroupProjectOptions;
    TColorBox* cbBackground;
    TFieldSlider* cbCompression;
    TFieldNumberEdit* cb2xWidth;
    QProgressBar* PB;
    TThumbnailView* MView;
};

// Makes and lays out all controls of `window`: the ribbon without its buttons, the column of editors, and the
// thumbnails. The editors show and change the current row of `table`. When a change fails, an editor calls
// `showError` with the text of the error. `table` must outlive the controls.
TMainControls MakeMainControls(
    QMainWindow& window, TProjectsTable& table, const std::function<void(const QString&)>& showError);

} // namespace Corvadine
