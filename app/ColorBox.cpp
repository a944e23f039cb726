#include "app/ColorBox.h"

#include "base/Color.h"
#include "widgets/ColorList.h"

#include <QColorDialog>
#include <QKeyEvent>
#include <QStyleOptionComboBox>
#include <QStylePainter>

namespace Corvadine {

namespace {

constexpr int InvalidColor = -1;
constexpr int MinimumWidth = 121;

QColor ColorOfStored(int stored)
{
    const auto color = TColor::FromStored(stored);
    return { color.Red, color.Green, color.Blue };
}

} // namespace

TColorBox::TColorBox(TProjectsTable& table, TField field, QWidget* parent)
    : QPushButton(parent), TFieldEditor(table, field, *this)
{
    setFocusPolicy(Qt::StrongFocus);
    connect(this, &QPushButton::clicked, this, &TColorBox::OpenList);
    Attach();
}

void TColorBox::ShowColor(int stored)
{
    FShown = stored;
    setAccessibleDescription(stored == InvalidColor ? tr("No color") : ColorOfStored(stored).name());
    update();
}

QSize TColorBox::sizeHint() const
{
    QStyleOptionComboBox option;
    option.initFrom(this);
    const QSize content(MinimumWidth, fontMetrics().height());
    const QSize size = style()->sizeFromContents(QStyle::CT_ComboBox, &option, content, this);
    return { MinimumWidth, size.height() };
}

void TColorBox::ShowValue(const QVariant& value)
{
    if (value.isValid()) {
        ShowColor(value.toInt());
        return;
    }
    FShown.reset();
    setAccessibleDescription({});
    update();
}

void TColorBox::paintEvent(QPaintEvent*)
{
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    option.initFrom(this);
    option.editable = false;
    if (isDown())
        option.state |= QStyle::State_Sunken;
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    if (FShown)
        PaintSwatch(painter,
            style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this));
}

void TColorBox::keyPressEvent(QKeyEvent* event)
{
    const bool opens =
        event->key() == Qt::Key_F4 || event->key() == Qt::Key_Down || event->key() == Qt::Key_Up;
    if (opens)
        OpenList();
    else
        QPushButton::keyPressEvent(event);
}

// Opens the list when the button is pressed, as other drop-downs do. QPushButton would wait for the release.
void TColorBox::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        OpenList();
    else
        QPushButton::mousePressEvent(event);
}

QColor TColorBox::ShownColor() const
{
    return FShown ? ColorOfStored(*FShown) : QColor(Qt::white);
}

void TColorBox::OpenList()
{
    auto* list = new TColorList(FShown ? ShownColor() : QColor(), this);
    connect(list, &TColorList::ColorChosen, this, &TColorBox::Choose);
    connect(list, &TColorList::MoreRequested, this, &TColorBox::AskForColor);
    list->OpenAt(*this);
}

void TColorBox::AskForColor()
{
    const QColor color =
        QColorDialog::getColor(ShownColor(), window(), accessibleName(), QColorDialog::DontUseNativeDialog);
    if (color.isValid())
        Choose(color);
}

void TColorBox::Choose(const QColor& color)
{
    Write(TColor::FromRgb(color.rgb()).ToStored());
}

void TColorBox::PaintSwatch(QPainter& painter, const QRect& area) const
{
    const QRectF swatch = QRectF(area).adjusted(2.5, 3.5, -2.5, -3.5);
    QColor frame = palette().color(QPalette::WindowText);
    frame.setAlphaF(0.4F);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(frame);
    painter.setBrush(ShownColor());
    painter.drawRoundedRect(swatch, 2, 2);
    if (*FShown == InvalidColor) {
        painter.setPen(QPen(Qt::red, 1.5));
        painter.drawLine(swatch.bottomLeft(), swatch.topRight());
    }
}

} // namespace Corvadine
