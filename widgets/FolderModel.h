#pragma once

#include <QAbstractItemModel>
#include <QIcon>

#include <vector>

namespace Corvadine {

// The entries of one folder (see ListFolder()) as a tree. The model lists a folder of the tree when a view
// first asks for its entries. It does not watch the disk for changes and starts no thread. A list view shows
// only the first level.
class TFolderModel : public QAbstractItemModel {
    Q_OBJECT
public:
    // The model lists all folders, and the files that match `masks`. It is empty until SetFolder() is called.
    explicit TFolderModel(const QStringList& masks, QObject* parent = nullptr);

    // Folder() returns the path of the model's folder, in the form of ShellFolders.h. The entries of this
    // folder are the top level of the tree. SetFolder() lists `folder` again even if `folder` is already the
    // model's folder.
    QString Folder() const { return FRoot.Name; }
    void SetFolder(const QString& folder);

    // Returns the path of the entry at `index`, in the form of ShellFolders.h. An invalid `index` stands for
    // the model's folder.
    QString PathOf(const QModelIndex& index) const;
    bool IsFolder(const QModelIndex& index) const;

    // Returns the entry `path`, and lists every folder on the way to this entry. If a part of `path` is
    // hidden or missing, returns the entry of the last part before it. If the model has no entry for any part
    // of `path`, returns an invalid index.
    QModelIndex IndexOf(const QString& path);

    // Returns the longest name on the top level. Views compute one width for all entries from this name.
    // Returns an empty name if there is no entry.
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
        std::vector<TNode> Children; // must not move: indexes point to these nodes
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
