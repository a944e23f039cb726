#include "widgets/ColorList.h"

#include "widgets/DropDownFrame.h"

#include <QAbstractTableModel>
#include <QHeaderView>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>
#include <set>
#include <tuple>

namespace Corvadine {

namespace {

constexpr int CellSide = 22;

// Returns whether `color` is close to white, gray or black. This is true of 30 named colors, so the neutral
// colors fill exactly three columns of the list.
bool IsNeutral(const QColor& color)
{
    const auto [low, high] = std::minmax({ color.red(), color.green(), color.blue() });
    return high - low < 35;
}

bool IsLighter(const TNamedColor& a, const TNamedColor& b)
{
    return std::tuple(b.Color.lightness(), a.Name) < std::tuple(a.Color.lightness(), b.Name);
}

bool IsEarlierOnCircle(const TNamedColor& a, const TNamedColor& b)
{
    return std::tuple(a.Color.hslHue(), a.Name) < std::tuple(b.Color.hslHue(), b.Name);
}

std::vector<TNamedColor> OrderedColors()
{
    std::vector<TNamedColor> colors;
    std::set<QRgb> seen; // some colors have two names, such as aqua and cyan
    for (const QString& name : QColor::colorNames()) {
        const QColor color(name);
        if (color.alpha() == 255 && seen.insert(color.rgb()).second)
            colors.push_back({ name, color });
    }
    const auto circle = std::stable_partition(
        colors.begin(), colors.end(), [](const TNamedColor& named) { return IsNeutral(named.Color); });
    std::sort(colors.begin(), circle, IsLighter);
    std::sort(circle, colors.end(), IsEarlierOnCircle);
    for (auto run = circle; run != colors.end();) {
        const auto end = run + std::min<std::ptrdiff_t>(NamedColorRun, colors.end() - run);
        std::sort(run, end, IsLighter);
        run = end;
    }
    return colors;
}

// A table of the named colors. Each column is one run, from top to bottom. Only screen readers get the names.
class TColorModel : public QAbstractTableModel {
public:
    using QAbstractTableModel::QAbstractTableModel;

    static std::size_t PositionOf(const QModelIndex& index)
    {
        return static_cast<std::size_t>(index.column()) * NamedColorRun
            + static_cast<std::size_t>(index.row());
    }

    int rowCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : NamedColorRun; }
    int columnCount(const QModelIndex& parent) const override
    {
        const auto count = static_cast<int>(NamedColors().size());
        return parent.isValid() ? 0 : (count + NamedColorRun - 1) / NamedColorRun;
    }
    Qt::ItemFlags flags(const QModelIndex& index) const override
    {
        return PositionOf(index) < NamedColors().size() ? QAbstractTableModel::flags(index) : Qt::NoItemFlags;
    }
    QVariant data(const QModelIndex& index, int role) const override
    {
        const std::size_t position = PositionOf(index);
        if (position >= NamedColors().size())
            return {};
        switch (role) {
        case Qt::BackgroundRole:
            return NamedColors()[position].Color;
        case Qt::AccessibleTextRole:
            return NamedColors()[position].Name;
        default:
            return {};
        }
    }
};

class TSwatchDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const QVariant color = index.data(Qt::BackgroundRole);
        if (!color.isValid())
            return;
        const bool isMarked = option.state & (QStyle::State_Selected | QStyle::State_MouseOver);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        if (isMarked) {
            painter->setPen(QPen(option.palette.color(QPalette::Highlight), 2));
            painter->setBrush(Qt::NoBrush);
            painter->drawRoundedRect(QRectF(option.rect).adjusted(1, 1, -1, -1), 3, 3);
        }
        QColor frame = option.palette.color(QPalette::WindowText);
        frame.setAlphaF(0.25F);
        painter->setPen(frame);
        painter->setBrush(color.value<QColor>());
        painter->drawRoundedRect(QRectF(option.rect).adjusted(3.5, 3.5, -3.5, -3.5), 2, 2);
        painter->restore();
    }
};

// Makes a table that shows only its cells and is exactly as large as all cells together.
QTableView* MakeSwatches(QWidget* parent)
{
    auto* view = new QTableView(parent);
    view->setModel(new TColorModel(view));
    view->setItemDelegate(new TSwatchDelegate(view));
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setShowGrid(false);
    view->setFrameShape(QFrame::NoFrame);
    view->setMouseTracking(true);
    view->setTabKeyNavigation(false);
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    for (auto* header : { view->horizontalHeader(), view->verticalHeader() }) {
        header->hide();
        header->setMinimumSectionSize(CellSide);
        header->setDefaultSectionSize(CellSide);
    }
    view->viewport()->setBackgroundRole(QPalette::Window);
    view->setFixedSize(view->model()->columnCount() * CellSide, view->model()->rowCount() * CellSide);
    view->setAccessibleName(TColorList::tr("Named colors"));
    return view;
}

} // namespace

const std::vector<TNamedColor>& NamedColors()
{
    static const std::vector<TNamedColor> Colors = OrderedColors();
    return Colors;
}

TColorList::TColorList(const QColor& current, QWidget* parent)
    : QFrame(parent, Qt::Popup), FView(MakeSwatches(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setFrameStyle(QFrame::StyledPanel | QFrame::Plain);
    auto* more = new QPushButton(tr("&More…"), this);
    more->setAutoDefault(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->setSpacing(6);
    layout->addWidget(FView);
    layout->addWidget(more);

    const auto& colors = NamedColors();
    const auto known = std::ranges::find(colors, current, &TNamedColor::Color);
    const auto position = known == colors.end() ? 0 : static_cast<int>(known - colors.begin());
    const QModelIndex cell = FView->model()->index(position % NamedColorRun, position / NamedColorRun);
    FView->selectionModel()->setCurrentIndex(
        cell, known == colors.end() ? QItemSelectionModel::NoUpdate : QItemSelectionModel::ClearAndSelect);

    connect(FView, &QTableView::clicked, this, &TColorList::Choose);
    connect(FView, &QTableView::activated, this, &TColorList::Choose);
    connect(more, &QPushButton::clicked, this, [this] {
        close();
        emit MoreRequested();
    });
    FView->setFocus();
}

void TColorList::OpenAt(const QWidget& box)
{
    setGeometry(DropDownPlace(box, sizeHint()));
    show();
}

void TColorList::mousePressEvent(QMouseEvent* event)
{
    // A press outside closes the list, and Qt then sends the press to the control under the pointer. The box
    // must not get the press, because it would open the list again.
    const QWidget* box = parentWidget();
    if (box && box->rect().contains(box->mapFromGlobal(event->globalPosition().toPoint())))
        setAttribute(Qt::WA_NoMouseReplay);
    QFrame::mousePressEvent(event);
}

void TColorList::Choose(const QModelIndex& index)
{
    // If the style activates items on one click, a click calls Choose() twice. The second call finds the list
    // closed and does nothing.
    const std::size_t position = TColorModel::PositionOf(index);
    if (!isVisible() || position >= NamedColors().size())
        return;
    close();
    emit ColorChosen(NamedColors()[position].Color);
}

} // namespace Corvadine
