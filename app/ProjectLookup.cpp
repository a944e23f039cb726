#include "app/ProjectLookup.h"

#include "store/ProjectsTable.h"

#include <QAbstractItemView>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <QStyleOption>
#include <QStylePainter>
#include <QWheelEvent>

#include <algorithm>

namespace Corvadine {

namespace {

constexpr int GripSide = 14;
constexpr int TextMargin = 4;
constexpr int MinimumCharacters = 20; // the box itself may be narrow, as it cuts what it shows
constexpr QSize SmallestList(120, 48);

} // namespace

// The corner by which a drop-down list is sized. Window managers do not size windows of this kind, and Qt's
// own grip leaves it to them.
class TListGrip : public QWidget {
public:
    explicit TListGrip(QWidget* list) : QWidget(list)
    {
        setFixedSize(GripSide, GripSide);
        setCursor(Qt::SizeFDiagCursor);
    }

    // Whether the user has ever sized the list.
    bool WasUsed() const { return FWasUsed; }

protected:
    void mousePressEvent(QMouseEvent* event) override
    {
        FStart = event->globalPosition().toPoint();
        FSizeAtStart = window()->size();
    }
    void mouseMoveEvent(QMouseEvent* event) override
    {
        const QPoint way = event->globalPosition().toPoint() - FStart;
        window()->resize((FSizeAtStart + QSize(way.x(), way.y())).expandedTo(SmallestList));
        FWasUsed = true;
    }
    void mouseReleaseEvent(QMouseEvent*) override { } // the list would take it for a click beside it
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        QStyleOptionSizeGrip option;
        option.initFrom(this);
        option.corner = Qt::BottomRightCorner;
        style()->drawControl(QStyle::CE_SizeGrip, &option, &painter, this);
    }

private:
    QPoint FStart;
    QSize FSizeAtStart;
    bool FWasUsed = false;
};

TProjectLookup::TProjectLookup(TProjectsTable& table, QWidget* parent) : QComboBox(parent), FTable(table)
{
    setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(MinimumCharacters);
    view()->setTextElideMode(Qt::ElideMiddle);
    auto* belowScrollBar = new QWidget(this); // so that it ends above the grip
    belowScrollBar->setFixedSize(GripSide, GripSide);
    view()->addScrollBarWidget(belowScrollBar, Qt::AlignBottom);
    FGrip = new TListGrip(List());
    List()->installEventFilter(this);
    setFocusPolicy(Qt::StrongFocus); // none from the mouse wheel

    connect(&table, &TProjectsTable::RowsChanged, this, &TProjectLookup::ReadRows);
    connect(&table, &TProjectsTable::StateChanged, this, [this] {
        if (!FTable.IsOpen()) // closing announces no change of the rows
            ReadRows();
    });
    connect(this, &QComboBox::activated, this, [this] {
        FValue = currentData().toLongLong();
        ShowSelected();
        emit ValueChosen(*FValue);
    });
    ReadRows();
}

void TProjectLookup::SetValue(std::optional<qint64> value)
{
    const bool isNew = value != FValue;
    FValue = value;
    FText.clear();
    ShowSelected();
    if (isNew && value)
        emit ValueChosen(*value);
}

void TProjectLookup::showPopup()
{
    const QSize sizeBefore = List()->size();
    QComboBox::showPopup();
    const QRect screen = this->screen()->availableGeometry();
    const int fittingWidth = view()->sizeHintForColumn(0) + view()->verticalScrollBar()->sizeHint().width()
        + List()->width() - view()->viewport()->width();
    QSize size =
        FGrip->WasUsed() ? sizeBefore : QSize(std::max(List()->width(), fittingWidth), List()->height());
    List()->resize(size.boundedTo(screen.size()));
    const int overhang = List()->geometry().right() - screen.right();
    if (overhang > 0)
        List()->move(List()->x() - overhang, List()->y());
}

bool TProjectLookup::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == List() && (event->type() == QEvent::Resize || event->type() == QEvent::Show)) {
        FGrip->move(List()->width() - GripSide, List()->height() - GripSide);
        FGrip->raise();
    }
    return QComboBox::eventFilter(watched, event);
}

void TProjectLookup::paintEvent(QPaintEvent*)
{
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QRect area =
        style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    // A path says most at its ends.
    option.currentText = fontMetrics().elidedText(FText, Qt::ElideMiddle, area.width() - TextMargin);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

void TProjectLookup::wheelEvent(QWheelEvent* event)
{
    // Whoever scrolls past the box does not mean to change to another project.
    event->ignore();
}

// The window of the drop-down.
QWidget* TProjectLookup::List() const
{
    return view()->parentWidget();
}

void TProjectLookup::ReadRows()
{
    clear();
    for (const TProject& project : FTable.Rows())
        addItem(project.ProjectFile, QVariant::fromValue<qlonglong>(project.ID));
    ShowSelected();
}

// Without such a row the text stays as it was.
void TProjectLookup::ShowSelected()
{
    setCurrentIndex(FValue ? findData(QVariant::fromValue<qlonglong>(*FValue)) : -1);
    if (currentIndex() >= 0)
        FText = currentText();
    update();
}

} // namespace Corvadine
