#include "dialogs/ShellDropDown.h"

#include "dialogs/DropDownFrame.h"
#include "dialogs/FolderModel.h"
#include "dialogs/ShellFolders.h"

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
    tree->setExpandsOnDoubleClick(false); // the first click has done it
    tree->setAccessibleName(QStringLiteral("Drives, folders and project files"));
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
    // Made anew each time, so that it shows what is there now.
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
    // The frame closes itself; the list that QComboBox would hide is never shown.
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
    event->ignore(); // there is no row of items to roll through
}

// The text, if it names something; else where the user may want to start.
QString TShellDropDown::PathToShow() const
{
    const QFileInfo typed(QDir::fromNativeSeparators(currentText()));
    if (currentText().isEmpty() || !typed.exists())
        return FStartFolder;
    return QDir::cleanPath(typed.absoluteFilePath());
}

} // namespace Corvadine
