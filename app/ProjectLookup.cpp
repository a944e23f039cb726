#include "app/ProjectLookup.h"

#include "base/Literals.h"
#include "store/ProjectsTable.h"
#include "widgets/DropDownFrame.h"

#include <QAbstractItemView>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOption>
#include <QStylePainter>
#include <QWheelEvent>

#include <algorithm>

namespace Corvadine {

namespace {

constexpr int GripSide = 14;
constexpr int TextMargin = 4;
constexpr int MinimumCharacters = 20; // a longer path is shortened
constexpr QSize SmallestList(120, 48);

} // namespace

// The corner for sizing a drop-down list. QSizeGrip does not work here. It asks the window manager to size
// the window, but window managers do not size drop-down windows.
class TListGrip : public QWidget {
public:
    explicit TListGrip(QWidget* list) : QWidget(list)
    {
        setFixedSize(GripSide, GripSide);
        setCursor(Qt::SizeFDiagCursor);
    }

    // Returns whether the user has sized the list.
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
    void mouseReleaseEvent(QMouseEvent*) override { } // otherwise the list gets the event and closes
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
    auto* belowScrollBar = new QWidget(this); // so that the scroll bar ends above the grip
    belowScrollBar->setFixedSize(GripSide, GripSide);
    view()->addScrollBarWidget(belowScrollBar, Qt::AlignBottom);
    FGrip = new TListGrip(List());
    List()->installEventFilter(this);
    setFocusPolicy(Qt::StrongFocus); // the mouse wheel must not move the focus here

    connect(&table, &TProjectsTable::RowsChanged, this, &TProjectLookup::ReadRows);
    connect(&table, &TProjectsTable::StateChanged, this, [this] {
        if (!FTable.IsOpen()) // Close() does not emit RowsChanged
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

QString TProjectLookup::Text() const
{
    return FTable.IsOpen() ? FText : u"not connected"_s;
}

void TProjectLookup::showPopup()
{
    QSize size = List()->size();
    QComboBox::showPopup();
    if (!FGrip->WasUsed()) {
        const int fittingWidth = view()->sizeHintForColumn(0)
            + view()->verticalScrollBar()->sizeHint().width() + List()->width() - view()->viewport()->width();
        size = QSize(std::max(List()->width(), fittingWidth), List()->height());
    }
    List()->setGeometry(DropDownPlace(*this, size));
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
    // Cuts the middle, because paths differ most at their beginnings and ends.
    option.currentText = fontMetrics().elidedText(Text(), Qt::ElideMiddle, area.width() - TextMargin);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

void TProjectLookup::wheelEvent(QWheelEvent* event)
{
    event->ignore(); // scrolling over the box must not change to another project
}

// Returns the window that contains the drop-down list.
QWidget* TProjectLookup::List() const
{
    return view()->parentWidget();
}

void TProjectLookup::ReadRows()
{
    clear();
    for (const TProject& project : FTable.Rows())
        addItem(project.ProjectFile, QVariant::fromValue<qlonglong>(project.ID));
    // Forgets a project that is gone, because the database may give its ID to another project later.
    if (const int index = IndexOfValue(); index < 0 || itemText(index) != FText)
        FValue.reset();
    ShowSelected();
}

// Returns the position of the row with the ID FValue, or -1 if there is none.
int TProjectLookup::IndexOfValue() const
{
    return FValue ? findData(QVariant::fromValue<qlonglong>(*FValue)) : -1;
}

// Selects the row with the ID FValue. Without such a row, keeps the text, so a deleted project stays shown.
void TProjectLookup::ShowSelected()
{
    setCurrentIndex(IndexOfValue());
    if (currentIndex() >= 0)
        FText = currentText();
    update();
}

} // namespace Corvadine
