#include "widgets/FolderModel.h"

#include "widgets/ShellFolders.h"

#include <QApplication>
#include <QStyle>

#include <algorithm>

namespace Corvadine {

TFolderModel::TFolderModel(const QStringList& masks, QObject* parent)
    : QAbstractItemModel(parent)
    , FMasks(masks)
    , FDriveIcon(QApplication::style()->standardIcon(QStyle::SP_DriveHDIcon))
    , FFolderIcon(QApplication::style()->standardIcon(QStyle::SP_DirIcon))
    , FFileIcon(QApplication::style()->standardIcon(QStyle::SP_FileIcon))
{
    FRoot.Listed = true;
}

void TFolderModel::SetFolder(const QString& folder)
{
    beginResetModel();
    FRoot.Name = folder;
    FRoot.Children = ListChildren(FRoot);
    endResetModel();
}

QString TFolderModel::PathOf(const QModelIndex& index) const
{
    return PathTo(*NodeOf(index));
}

bool TFolderModel::IsFolder(const QModelIndex& index) const
{
    return NodeOf(index)->IsFolder;
}

QModelIndex TFolderModel::IndexOf(const QString& path)
{
    QModelIndex found;
    for (const QString& part : FolderChain(path)) {
        if (canFetchMore(found))
            fetchMore(found);
        const TNode& folder = *NodeOf(found);
        const QString folderPath = PathTo(folder);
        const auto child = std::find_if(folder.Children.begin(), folder.Children.end(),
            [&](const TNode& node) { return EntryPath(folderPath, node.Name) == part; });
        // If this part is above the model's folder, hidden or missing, then no child matches.
        if (child != folder.Children.end())
            found = IndexFor(*child);
    }
    return found;
}

QString TFolderModel::LongestName() const
{
    const auto longest = std::max_element(FRoot.Children.begin(), FRoot.Children.end(),
        [](const TNode& a, const TNode& b) { return a.Name.size() < b.Name.size(); });
    return longest == FRoot.Children.end() ? QString() : longest->Name;
}

QModelIndex TFolderModel::index(int row, int column, const QModelIndex& parent) const
{
    if (column != 0 || row < 0 || row >= rowCount(parent))
        return {};
    return createIndex(row, 0, &NodeOf(parent)->Children[static_cast<std::size_t>(row)]);
}

QModelIndex TFolderModel::parent(const QModelIndex& index) const
{
    const TNode& node = *NodeOf(index);
    return node.Parent ? IndexFor(*node.Parent) : QModelIndex();
}

int TFolderModel::rowCount(const QModelIndex& parent) const
{
    return static_cast<int>(NodeOf(parent)->Children.size());
}

int TFolderModel::columnCount(const QModelIndex&) const
{
    return 1;
}

QVariant TFolderModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const TNode& node = *NodeOf(index);
    const bool isDrive = node.Parent->Name.isEmpty();
    if (role == Qt::DisplayRole)
        return isDrive ? FolderLabel(node.Name) : node.Name;
    if (role == Qt::DecorationRole)
        return isDrive ? FDriveIcon : node.IsFolder ? FFolderIcon : FFileIcon;
    return {};
}

Qt::ItemFlags TFolderModel::flags(const QModelIndex& index) const
{
    return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::NoItemFlags;
}

bool TFolderModel::hasChildren(const QModelIndex& parent) const
{
    return canFetchMore(parent) || rowCount(parent) > 0;
}

bool TFolderModel::canFetchMore(const QModelIndex& parent) const
{
    const TNode& node = *NodeOf(parent);
    return node.IsFolder && !node.Listed;
}

void TFolderModel::fetchMore(const QModelIndex& parent)
{
    TNode& node = *NodeOf(parent);
    node.Listed = true;
    std::vector<TNode> children = ListChildren(node);
    if (children.empty()) {
        emit dataChanged(parent, parent); // the view has drawn an arrow and must remove it
        return;
    }
    beginInsertRows(parent, 0, static_cast<int>(children.size()) - 1);
    node.Children = std::move(children);
    endInsertRows();
}

TFolderModel::TNode* TFolderModel::NodeOf(const QModelIndex& index) const
{
    // This function is const so that all other functions can call it. Only non-const functions change
    // the node.
    return index.isValid() ? static_cast<TNode*>(index.internalPointer()) : const_cast<TNode*>(&FRoot);
}

QModelIndex TFolderModel::IndexFor(const TNode& node) const
{
    if (!node.Parent)
        return {};
    return createIndex(static_cast<int>(&node - node.Parent->Children.data()), 0, &node);
}

QString TFolderModel::PathTo(const TNode& node)
{
    return node.Parent ? EntryPath(PathTo(*node.Parent), node.Name) : node.Name;
}

std::vector<TFolderModel::TNode> TFolderModel::ListChildren(TNode& node) const
{
    std::vector<TNode> children;
    for (const TFolderEntry& entry : ListFolder(PathTo(node), FMasks))
        children.push_back({ &node, entry.Name, entry.IsFolder, false, {} });
    return children;
}

} // namespace Corvadine
