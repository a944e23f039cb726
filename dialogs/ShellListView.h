#pragma once

#include "dialogs/FolderModel.h"

#include <QDateTime>
#include <QListView>

namespace Corvadine {

// The entries of one folder as small icons in columns: every folder, and the files that match the masks.
// Opening a folder shows it here; opening a file does nothing but tell. Paths in signals are in the system's
// own form. Coming back to the window lists the folder again if it has changed meanwhile.
class TShellListView : public QListView {
    Q_OBJECT
public:
    explicit TShellListView(const QStringList& masks, QWidget* parent = nullptr);

    // The folder shown, as ShellFolders.h writes paths. Going up puts the cursor on the folder left,
    // unselected.
    QString Folder() const { return FModel.Folder(); }
    void SetFolder(const QString& folder);

    // The entry `name`, invalid if it is not listed.
    QModelIndex IndexOf(const QString& name);

signals:
    // The selection has moved to `path`.
    void ItemSelected(const QString& path);

    // A double-click or Enter on the file `path`.
    void ItemExecuted(const QString& path);

    // The user opened a folder, which is now shown.
    void FolderOpened(const QString& folder);

protected:
    bool event(QEvent* event) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;

private:
    void Open(const QModelIndex& index);
    void List(const QString& folder);
    void RefreshIfChanged();

    TFolderModel FModel;
    QDateTime FListedTime; // the folder's own, when it was listed
    bool FRestoring = false;
};

} // namespace Corvadine
