#pragma once

#include <QAbstractItemModel>
#include <QIcon>

#include <vector>

namespace Corvadine {

// The entries of one folder (see ListFolder) as a tree: the folders among them list their own when a view
// asks. A listing is a moment's; nothing is watched and no thread is started. Flat views use the first level
// only.
class TFolderModel : public QAbstractItemModel {
    Q_OBJECT
public:
    // Lists folders, and files that match `masks`. Shows no folder until SetFolder.
    explicit TFolderModel(const QStringList& masks, QObject* parent = nullptr);

    // The folder whose entries are the top level, as ShellFolders.h writes paths; setting it lists it anew.
    QString Folder() const { return FRoot.Name; }
    void SetFolder(const QString& folder);

    // The entry at `index` as ShellFolders.h writes paths; the model's folder for an invalid index.
    QString PathOf(const QModelIndex& index) const;
    bool IsFolder(const QModelIndex& index) const;

    // The entry `path`, listing every folder on the way; where the way ends early (hidden, gone), the last
    // entry on it; invalid if there is none.
    QModelIndex IndexOf(const QString& path);

    // The longest name on the top level, for views that give all entries one width.
    QString LongestName() const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;

private:
    struct TNode {
        TNode* Parent = nullptr;
        QString Name;
        bool IsFolder = true;
        bool Listed = false;
        std::vector<TNode> Children; // filled once, so that the nodes stay where they are
    };

    TNode* NodeOf(const QModelIndex& index) const;
    QModelIndex IndexFor(const TNode& node) const;
    static QString PathTo(const TNode& node);
    std::vector<TNode> ListChildren(TNode& node) const;

    QStringList FMasks;
    TNode FRoot;
    QIcon FDriveIcon;
    QIcon FFolderIcon;
    QIcon FFileIcon;
};

} // namespace Corvadine
