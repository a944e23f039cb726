#include "widgets/ShellListView.h"

#include "widgets/ShellFolders.h"

#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QScopedValueRollback>
#include <QScrollBar>

namespace Corvadine {

namespace {

constexpr int WidestColumn = 240; // longer names are cut in the middle

} // namespace

TShellListView::TShellListView(const QStringList& masks, QWidget* parent) : QListView(parent), FModel(masks)
{
    setModel(&FModel);
    setFlow(TopToBottom);
    setWrapping(true);
    setResizeMode(Adjust);
    setUniformItemSizes(true); // measuring thousands of names is slow
    setTextElideMode(Qt::ElideMiddle);
    setEditTriggers(NoEditTriggers);
    setDragDropMode(NoDragDrop);
    setSelectionMode(SingleSelection);
    const int icon = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this);
    setIconSize(QSize(icon, icon));
    connect(this, &QAbstractItemView::activated, this, &TShellListView::Open);
}

void TShellListView::SetFolder(const QString& folder)
{
    const QString former = Folder();
    List(folder);
    scrollToTop();
    if (ParentFolder(former) == folder)
        selectionModel()->setCurrentIndex(FModel.IndexOf(former), QItemSelectionModel::NoUpdate);
}

QModelIndex TShellListView::IndexOf(const QString& name)
{
    const QString path = EntryPath(Folder(), name);
    const QModelIndex index = FModel.IndexOf(path);
    return FModel.PathOf(index) == path ? index : QModelIndex();
}

bool TShellListView::event(QEvent* event)
{
    if (event->type() == QEvent::WindowActivate)
        RefreshIfChanged();
    return QListView::event(event);
}

void TShellListView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected)
{
    QListView::selectionChanged(selected, deselected);
    if (!selected.isEmpty() && !FRestoring)
        emit ItemSelected(QDir::toNativeSeparators(FModel.PathOf(selected.indexes().constFirst())));
}

void TShellListView::Open(const QModelIndex& index)
{
    const QString path = FModel.PathOf(index);
    if (!FModel.IsFolder(index)) {
        emit ItemExecuted(QDir::toNativeSeparators(path));
        return;
    }
    SetFolder(path);
    emit FolderOpened(path);
}

void TShellListView::List(const QString& folder)
{
    FListedTime = QFileInfo(folder).lastModified();
    FModel.SetFolder(folder);
    const int text = fontMetrics().horizontalAdvance(FModel.LongestName());
    const int margin = 2 * (style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 1);
    const int height = qMax(iconSize().height(), fontMetrics().height()) + 4;
    setGridSize(QSize(qMin(iconSize().width() + text + 3 * margin + height, WidestColumn), height));
}

void TShellListView::RefreshIfChanged()
{
    const QString folder = Folder();
    if (folder.isEmpty() || QFileInfo(folder).lastModified() == FListedTime)
        return;
    const QScopedValueRollback<bool> restoring(FRestoring, true);
    const QModelIndexList selected = selectedIndexes();
    const QString name = selected.isEmpty() ? QString() : selected.constFirst().data().toString();
    const int position = horizontalScrollBar()->value();
    List(folder);
    if (const QModelIndex index = IndexOf(name); !name.isEmpty() && index.isValid())
        setCurrentIndex(index);
    doItemsLayout();
    horizontalScrollBar()->setValue(position);
}

} // namespace Corvadine
