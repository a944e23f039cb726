#pragma once

#include <QFrame>
#include <QList>
#include <QString>

class QAction;
class QHBoxLayout;
class QModelIndex;
class QToolButton;

namespace Corvadine {

// A folder's path as a row of buttons, one a part: a click goes to the part, its arrow drops down the folders
// in it. Parts that do not fit are gathered at the left behind one button with a menu. With the keyboard,
// Left and Right walk along the parts, Space goes there and Down opens the drop-down. Paths are as
// ShellFolders.h writes them.
class TShellBreadCrumb : public QFrame {
    Q_OBJECT
public:
    explicit TShellBreadCrumb(QWidget* parent = nullptr);

    // The folder shown; empty until SetPath, and above the drives.
    QString Path() const { return FPath; }

    // Shows `folder` and tells, unless it is the one shown.
    void SetPath(const QString& folder);

    // Puts a button for `action` before the path.
    void AddButton(QAction* action);

signals:
    void PathChanged(const QString& folder);

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // The two buttons of one part; the arrow is null where there is nothing to drop down.
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
    QToolButton* FHidden; // the menu of the parts that do not fit
};

} // namespace Corvadine
