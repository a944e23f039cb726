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

// The controls of the main window that its commands speak to, each owned by its parent widget.
struct TMainControls {
    TRibbon* dxRibbon1;
    TProjectLookup* cbProjects;
    TImageView* ImageEnViewIcon;
    TImageView* ImageEnViewSplash;
    QToolButton* btnRemoveIcon; // in the headers of the two image panels
    QToolButton* btnRemoveSplash;
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

// Makes and lays out everything below `window`: the ribbon, still without buttons, the column of editors,
// which show and change the current row of `table`, and the thumbnails. An editor's error goes to
// `showError`.
TMainControls MakeMainControls(
    QMainWindow& window, TProjectsTable& table, const std::function<void(const QString&)>& showError);

} // namespace Corvadine
