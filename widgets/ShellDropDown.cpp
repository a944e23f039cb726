#include "widgets/ShellDropDown.h"

#include "base/Literals.h"
#include "widgets/DropDownFrame.h"
#include "widgets/FolderModel.h"
#include "widgets/ShellFolders.h"

#include <QDir>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTreeView>

namespace Corvadine {

namespace {

constexpr int PopupHeight = 320;

QTreeView* MakeTree()
{
    auto* tree = new QTreeView;
    tree->setHeaderHidden(true);
    tree->setUniformRowHeights(true);
    tree->setExpandsOnDoubleClick(false); // the first click has already expanded the folder
    tree->setAccessibleName(u"Drives, folders and project files"_s);
    return tree;
}

} // namespace

TShellDropDown::TShellDropDown(const QStringList& masks, QWidget* parent)
    : QComboBox(parent), FMasks(masks), FStartFolder(QDir::homePath())
{
    setEditable(true);
    setInsertPolicy(NoInsert);
    setCompleter(nullptr);
    setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
}

void TShellDropDown::SetStartFolder(const QString& folder)
{
    if (const auto existing = ExistingFolder(folder))
        FStartFolder = *existing;
}

void TShellDropDown::showPopup()
{
    // Makes a new tree each time, so that the tree shows the files that exist now.
    QTreeView* tree = MakeTree();
    auto* model = new TFolderModel(FMasks, tree);
    model->SetFolder({});
    tree->setModel(model);
    const QModelIndex start = model->IndexOf(PathToShow());
    tree->setCurrentIndex(start);
    tree->expand(start);

    auto* frame = new TDropDownFrame(tree, this);
    connect(frame, &TDropDownFrame::Chosen, this, [this, frame, tree, model](const QModelIndex& index) {
        if (model->IsFolder(index)) {
            tree->expand(index);
            return;
        }
        setEditText(QDir::toNativeSeparators(model->PathOf(index)));
        lineEdit()->selectAll();
        frame->close();
    });
    frame->DropDown(*this, QSize(FPopupWidth, PopupHeight));
    tree->scrollTo(start, QAbstractItemView::PositionAtTop);
}

void TShellDropDown::hidePopup()
{
    // Hides nothing: TDropDownFrame closes itself, and the list of QComboBox is never shown.
}

void TShellDropDown::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Down)
        showPopup();
    else
        QComboBox::keyPressEvent(event);
}

void TShellDropDown::wheelEvent(QWheelEvent* event)
{
    event->ignore(); // the box has no items that the wheel could choose
}

// Returns the path in the text if this file or folder exists, otherwise the start folder.
QString TShellDropDown::PathToShow() const
{
    const QFileInfo typed(QDir::fromNativeSeparators(currentText()));
    if (currentText().isEmpty() || !typed.exists())
        return FStartFolder;
    return QDir::cleanPath(typed.absoluteFilePath());
}

} // namespace Corvadine
