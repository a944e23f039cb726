#pragma once

#include <QFrame>
#include <QList>
#include <QString>

class QAction;
class QHBoxLayout;
class QModelIndex;
class QToolButton;

namespace Corvadine {

// A folder's path as a row of buttons. Each part of the path is a folder with two buttons. The button with
// the name shows the folder, and the button with the arrow drops down the folders inside. A further button at
// the left has a menu of the parts that do not fit. Left and Right move the focus along the parts. Space and
// Enter show the focused part's folder, and Down opens its drop-down. Paths have the form of ShellFolders.h.
class TShellBreadCrumb : public QFrame {
    Q_OBJECT
public:
    explicit TShellBreadCrumb(QWidget* parent = nullptr);

    // Returns the folder that is shown. The path is empty before the first SetPath(), and also for the root
    // above the drives.
    QString Path() const { return FPath; }

    // Shows `folder` and emits PathChanged(). Does nothing if `folder` is already shown.
    void SetPath(const QString& folder);

    // Adds a button for `action` to the left of the path.
    void AddButton(QAction* action);

signals:
    void PathChanged(const QString& folder);

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // The two buttons of one part. Arrow is null if the folder contains no folders.
    struct TCrumb {
        QString Folder;
        QToolButton* Name;
        QToolButton* Arrow;
    };

    TCrumb MakeCrumb(const QString& folder);
    void Rebuild();
    void FitIntoWidth();
    int WidthForPath() const;
    void FillMenuOfHidden();
    void DropDownFolders(const TCrumb& crumb);
    void MoveFocus(qsizetype from, int step);

    QString FPath;
    QList<TCrumb> FCrumbs; // from the root to FPath
    QHBoxLayout* FButtons;
    QHBoxLayout* FParts;
    QToolButton* FHidden; // its menu lists the parts that do not fit
};

} // namespace Corvadine
