#include "widgets/CaptionGroup.h"

#include "base/Literals.h"
#include "widgets/Icons.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

namespace Corvadine {

TCaptionGroup::TCaptionGroup(const QString& caption, QWidget* parent)
    : QFrame(parent), FHeader(new QWidget(this)), FRows(new QVBoxLayout(this))
{
    setFrameShape(QFrame::StyledPanel);
    setAccessibleName(caption);
    auto* title = new QLabel(caption, FHeader);
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    auto* line = new QHBoxLayout(FHeader);
    line->setContentsMargins(0, 0, 0, 0);
    line->addWidget(title, 1);
    constexpr int Side = 9; // so that a view of 230 pixels fits into a panel of 250
    FRows->setContentsMargins(Side, 3, Side, 5);
    FRows->setSpacing(3);
    FRows->addWidget(FHeader);
}

void TCaptionGroup::SetContent(QWidget* content)
{
    FRows->addWidget(content, 1);
}

QToolButton* TCaptionGroup::AddCloseButton(const QString& accessibleName)
{
    auto* button = new QToolButton(FHeader);
    button->setAutoRaise(true);
    button->setIcon(CommandIcon("close"_L1));
    button->setIconSize(QSize(12, 12));
    button->setAccessibleName(accessibleName);
    FHeader->layout()->addWidget(button);
    return button;
}

} // namespace Corvadine
