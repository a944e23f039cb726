#include "widgets/ShellBreadCrumb.h"

#include "base/Literals.h"
#include "widgets/DropDownFrame.h"
#include "widgets/FolderModel.h"
#include "widgets/ShellFolders.h"

#include <QAction>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QListView>
#include <QMenu>
#include <QToolButton>

#include <algorithm>

namespace Corvadine {

namespace {

constexpr int BarHeight = 24;
constexpr QSize IconSize(16, 16);
constexpr int DropDownRows = 16;
constexpr int DropDownWidth = 260;

QToolButton* MakeButton(QWidget* parent)
{
    auto* button = new QToolButton(parent);
    button->setAutoRaise(true);
    button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    return button;
}

} // namespace

TShellBreadCrumb::TShellBreadCrumb(QWidget* parent)
    : QFrame(parent), FButtons(new QHBoxLayout), FParts(new QHBoxLayout), FHidden(MakeButton(this))
{
    setFrameShape(StyledPanel);
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
    setMinimumHeight(BarHeight);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed); // a long path must not widen the dialog
    setAccessibleName(u"Folder path"_s);

    FHidden->setArrowType(Qt::LeftArrow);
    FHidden->setPopupMode(QToolButton::InstantPopup);
    FHidden->setMenu(new QMenu(FHidden));
    FHidden->setAccessibleName(u"Folders further up"_s);
    FHidden->setStyleSheet(u"QToolButton::menu-indicator { image: none; }"_s);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(FButtons);
    layout->addWidget(FHidden);
    layout->addLayout(FParts);
    layout->addStretch();
}

void TShellBreadCrumb::SetPath(const QString& folder)
{
    if (folder == FPath && !FCrumbs.isEmpty())
        return;
    FPath = folder;
    Rebuild();
    emit PathChanged(folder);
}

void TShellBreadCrumb::AddButton(QAction* action)
{
    QToolButton* button = MakeButton(this);
    button->setDefaultAction(action);
    button->setFocusPolicy(Qt::TabFocus);
    button->setIconSize(IconSize);
    button->setAccessibleName(action->text());
    FButtons->addWidget(button);
    setTabOrder(button, FHidden);
}

void TShellBreadCrumb::resizeEvent(QResizeEvent* event)
{
    QFrame::resizeEvent(event);
    FitIntoWidth();
}

bool TShellBreadCrumb::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress)
        return QFrame::eventFilter(watched, event);
    const auto crumb = std::find_if(
        FCrumbs.cbegin(), FCrumbs.cend(), [&](const TCrumb& candidate) { return candidate.Name == watched; });
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Left || key == Qt::Key_Right)
        MoveFocus(crumb - FCrumbs.cbegin(), key == Qt::Key_Left ? -1 : 1);
    else if (key == Qt::Key_Down && crumb->Arrow)
        DropDownFolders(*crumb);
    else if (key == Qt::Key_Return || key == Qt::Key_Enter)
        crumb->Name->click();
    else
        return false;
    return true;
}

TShellBreadCrumb::TCrumb TShellBreadCrumb::MakeCrumb(const QString& folder)
{
    TCrumb crumb { folder, MakeButton(this), nullptr };
    crumb.Name->setFocusPolicy(Qt::StrongFocus);
    crumb.Name->setAccessibleName(FolderLabel(folder));
    crumb.Name->installEventFilter(this);
    connect(crumb.Name, &QToolButton::clicked, this, [this, folder] { SetPath(folder); });
    FParts->addWidget(crumb.Name);
    setTabOrder(FCrumbs.isEmpty() ? FHidden : FCrumbs.constLast().Name, crumb.Name);
    if (!HasFolders(folder))
        return crumb;

    crumb.Arrow = MakeButton(this);
    crumb.Arrow->setArrowType(Qt::RightArrow);
    crumb.Arrow->setFocusPolicy(Qt::NoFocus);
    crumb.Arrow->setAccessibleName(u"Folders in %1"_s.arg(FolderLabel(folder)));
    crumb.Arrow->setFixedWidth(BarHeight * 3 / 4);
    connect(crumb.Arrow, &QToolButton::clicked, this, [this, crumb] { DropDownFolders(crumb); });
    FParts->addWidget(crumb.Arrow);
    return crumb;
}

void TShellBreadCrumb::Rebuild()
{
    const auto isFocused = [](const TCrumb& crumb) { return crumb.Name->hasFocus(); };
    const bool hadFocus = std::any_of(FCrumbs.cbegin(), FCrumbs.cend(), isFocused);
    for (const TCrumb& crumb : std::as_const(FCrumbs)) {
        for (QToolButton* button : { crumb.Name, crumb.Arrow }) {
            if (!button)
                continue;
            button->removeEventFilter(this);
            FParts->removeWidget(button);
            button->hide();
            button->deleteLater(); // not at once, because Qt may still handle a click on this button
        }
    }
    FCrumbs.clear();
    for (const QString& folder : FolderChain(FPath))
        FCrumbs.append(MakeCrumb(folder));
    FitIntoWidth();
    if (hadFocus)
        FCrumbs.constLast().Name->setFocus();
}

int TShellBreadCrumb::WidthForPath() const
{
    int taken = 0;
    for (int i = 0; i < FButtons->count(); ++i)
        taken += FButtons->itemAt(i)->sizeHint().width();
    return contentsRect().width() - taken;
}

// Shows as many of the last parts as fit. The last part is always shown, with a shortened name if necessary.
void TShellBreadCrumb::FitIntoWidth()
{
    const int width = WidthForPath();
    int room = width;
    bool fits = true;
    for (qsizetype i = FCrumbs.size() - 1; i >= 0; --i) {
        const TCrumb& crumb = FCrumbs[i];
        const bool isLast = i == FCrumbs.size() - 1;
        const int arrow = crumb.Arrow ? crumb.Arrow->width() : 0;
        const int forHidden = i > 0 ? FHidden->sizeHint().width() : 0;
        const QString label = FolderLabel(crumb.Folder);
        crumb.Name->setText(label);
        if (isLast) {
            const int padding = crumb.Name->sizeHint().width() - fontMetrics().horizontalAdvance(label);
            crumb.Name->setText(fontMetrics().elidedText(
                label, Qt::ElideMiddle, qMax(room - arrow - forHidden - padding, BarHeight)));
        }
        room -= crumb.Name->sizeHint().width() + arrow;
        fits = isLast || (fits && room >= forHidden);
        crumb.Name->setVisible(fits);
        if (crumb.Arrow)
            crumb.Arrow->setVisible(fits);
    }
    FillMenuOfHidden();
}

void TShellBreadCrumb::FillMenuOfHidden()
{
    QMenu& menu = *FHidden->menu();
    menu.clear();
    for (const TCrumb& crumb : std::as_const(FCrumbs)) {
        if (!crumb.Name->isHidden())
            continue;
        const QString folder = crumb.Folder;
        QAction* action = menu.addAction(FolderLabel(folder).replace(u'&', u"&&"_s));
        connect(action, &QAction::triggered, this, [this, folder] { SetPath(folder); });
    }
    FHidden->setVisible(!menu.isEmpty());
}

void TShellBreadCrumb::DropDownFolders(const TCrumb& crumb)
{
    auto* list = new QListView;
    auto* model = new TFolderModel({}, list);
    model->SetFolder(crumb.Folder);
    list->setModel(model);
    list->setUniformItemSizes(true);
    list->setIconSize(IconSize);
    list->setAccessibleName(u"Folders in %1"_s.arg(FolderLabel(crumb.Folder)));
    list->setCurrentIndex(model->index(0, 0));

    auto* frame = new TDropDownFrame(list, this);
    connect(frame, &TDropDownFrame::Chosen, this, [this, frame, model](const QModelIndex& index) {
        const QString folder = model->PathOf(index);
        frame->close();
        SetPath(folder);
    });
    const int rows = qMin(model->rowCount(), DropDownRows);
    frame->DropDown(*crumb.Name, QSize(DropDownWidth, rows * list->sizeHintForRow(0) + 4));
}

void TShellBreadCrumb::MoveFocus(qsizetype from, int step)
{
    const qsizetype to = from + step;
    if (to >= 0 && to < FCrumbs.size() && !FCrumbs[to].Name->isHidden())
        FCrumbs[to].Name->setFocus();
    else if (to >= 0 && to < FCrumbs.size())
        FHidden->setFocus();
}

} // namespace Corvadine
