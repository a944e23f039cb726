#pragma once

#include "widgets/FolderModel.h"

#include <QDateTime>
#include <QListView>

namespace Corvadine {

// The entries of one folder as small icons in columns: every folder, and the files that match the masks.
// Opening a folder shows its entries in this list. Opening a file only emits a signal. When the window
// becomes active, the folder is listed again if it has changed.
class TShellListView : public QListView {
    Q_OBJECT
public:
    explicit TShellListView(const QStringList& masks, QWidget* parent = nullptr);

    // Folder() returns the path of the folder that is shown, in the form of ShellFolders.h. SetFolder() may
    // go up to the parent folder. Then the cursor moves to the entry of the former folder, but this entry is
    // not selected.
    QString Folder() const { return FModel.Folder(); }
    void SetFolder(const QString& folder);

signals:
    // The user selected the entry `path`, which has the system's own delimiters.
    void ItemSelected(const QString& path);

    // The user opened the file `path` by a double-click or Enter. `path` has the system's own delimiters.
    void ItemExecuted(const QString& path);

    // The user opened a folder, and the list shows it. `folder` has the form of ShellFolders.h.
    void FolderOpened(const QString& folder);

protected:
    bool event(QEvent* event) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

private:
    void Open(const QModelIndex& index);
    QModelIndex IndexOf(const QString& name);
    void List(const QString& folder);
    void RefreshIfChanged();

    TFolderModel FModel;
    QDateTime FListedTime; // when the listed folder was last modified
    bool FRestoring = false;
};

} // namespace Corvadine
