#include "app/FieldEditors.h"

#include "base/Literals.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QRegularExpressionValidator>
#include <QSlider>
#include <QWheelEvent>

#include <algorithm>

namespace Corvadine {

namespace {

// Returns whether the key of `event` moves a slider.
bool IsSliderKey(const QKeyEvent& event)
{
    switch (event.key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End:
        return true;
    default:
        return false;
    }
}

} // namespace

TFieldCheckBox::TFieldCheckBox(const QString& caption, TProjectsTable& table, TField field, QWidget* parent)
    : QCheckBox(caption, parent), TFieldEditor(table, field, *this)
{
    connect(this, &QCheckBox::clicked, this, [this](bool ticked) { Write(ticked); });
    Attach();
}

void TFieldCheckBox::ShowValue(const QVariant& value)
{
    setChecked(value.toBool());
}

TFieldComboBox::TFieldComboBox(
    const std::vector<TChoice>& choices, TProjectsTable& table, TField field, QWidget* parent)
    : QComboBox(parent), TFieldEditor(table, field, *this)
{
    for (const auto& [value, caption] : choices)
        addItem(caption, value);
    setFocusPolicy(Qt::StrongFocus); // the mouse wheel must not move the focus here
    setMaxVisibleItems(count());     // the list is short and needs no scroll bar
    connect(this, &QComboBox::activated, this, [this] { Write(currentData()); });
    Attach();
}

void TFieldComboBox::ShowValue(const QVariant& value)
{
    setCurrentIndex(value.isValid() ? findData(value) : -1);
}

void TFieldComboBox::wheelEvent(QWheelEvent* event)
{
    // Scrolling over a box without the focus must not change the project.
    if (hasFocus())
        QComboBox::wheelEvent(event);
    else
        event->ignore();
}

TFieldSlider::TFieldSlider(TProjectsTable& table, TField field, QWidget* parent)
    : QWidget(parent)
    , TFieldEditor(table, field, *this)
    , FSlider(new QSlider(Qt::Horizontal, this))
    , FNumber(new QLabel(this))
{
    FSlider->setRange(Minimum, Maximum);
    FSlider->setPageStep(1);
    FSlider->setTickPosition(QSlider::TicksBelow);
    FSlider->setTickInterval(1);
    FSlider->setFocusPolicy(Qt::StrongFocus); // the mouse wheel must not move the focus here
    FSlider->installEventFilter(this);
    FNumber->setMinimumWidth(fontMetrics().horizontalAdvance(QString::number(Maximum)));
    setFocusProxy(FSlider);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(FSlider, 1);
    layout->addWidget(FNumber);

    connect(FSlider, &QSlider::valueChanged, this, &TFieldSlider::Move);
    Attach();
}

std::optional<int> TFieldSlider::Value() const
{
    return FHasValue ? std::optional(FSlider->value()) : std::nullopt;
}

bool TFieldSlider::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != FSlider)
        return QWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::FocusOut:
        Leave();
        break;
    case QEvent::Leave:
        if (!FSlider->isSliderDown())
            Leave();
        break;
    case QEvent::MouseButtonRelease:
        // A drag can end outside of the slider. Leave() is queued because the slider handles the release only
        // after this filter.
        if (!FSlider->rect().contains(static_cast<QMouseEvent*>(event)->pos()))
            QMetaObject::invokeMethod(this, &TFieldSlider::Leave, Qt::QueuedConnection);
        break;
    case QEvent::ShortcutOverride: // sent before a shortcut is carried out, even for Ctrl or Alt alone
    case QEvent::KeyPress:
        if (!IsSliderKey(*static_cast<QKeyEvent*>(event)))
            Leave();
        break;
    case QEvent::Wheel:
        if (!FSlider->hasFocus()) {
            event->ignore();
            return true;
        }
        break;
    default:
        break;
    }
    return false;
}

void TFieldSlider::ShowValue(const QVariant& value)
{
    FHasValue = value.isValid();
    FIsMoved = false;
    FIsShowing = true;
    FSlider->setValue(FHasValue ? std::clamp(value.toInt(), Minimum, Maximum) : Minimum);
    FIsShowing = false;
    ShowNumber();
}

void TFieldSlider::showEvent(QShowEvent* event)
{
    // Screen readers read the name of the slider, not the name of this widget around the slider.
    FSlider->setAccessibleName(accessibleName());
    QWidget::showEvent(event);
}

void TFieldSlider::Move(int)
{
    if (FIsShowing)
        return;
    FHasValue = true;
    FIsMoved = true;
    ShowNumber();
}

void TFieldSlider::Leave()
{
    if (FIsMoved)
        Write(FSlider->value());
}

void TFieldSlider::ShowNumber()
{
    FNumber->setText(FHasValue ? QString::number(FSlider->value()) : QString());
}

TFieldNumberEdit::TFieldNumberEdit(TProjectsTable& table, TField field, QWidget* parent)
    : QLineEdit(parent), TFieldEditor(table, field, *this)
{
    // The greatest allowed number is 999999999, so a limit on the number of digits is enough. Leading zeros
    // may be typed too.
    static const QRegularExpression Digits(u"[0-9]{0,%1}"_s.arg(QString::number(TwoxSizeRange.Most).size()));
    setValidator(new QRegularExpressionValidator(Digits, this));
    // A line of text would accept a dropped file as moved, and the file manager would then delete the file.
    setAcceptDrops(false);
    connect(this, &QLineEdit::textEdited, this, &TFieldNumberEdit::WriteText);
    Attach();
}

std::optional<int> TFieldNumberEdit::Value() const
{
    bool isNumber = false;
    const int value = text().toInt(&isNumber);
    return isNumber ? std::optional(value) : std::nullopt;
}

void TFieldNumberEdit::ShowValue(const QVariant& value)
{
    if (FIsBlanked)
        return;
    // While the user types, a text such as "007" stays if its number is the value of the field. Setting a new
    // text would move the cursor of the line.
    const auto shown = value.isValid() ? std::optional(value.toInt()) : std::nullopt;
    if (shown != Value() || !hasFocus())
        setText(shown ? QString::number(*shown) : QString());
}

// While FIsBlanked is set, the saved value is not shown, because the user may want to type another number.
void TFieldNumberEdit::WriteText()
{
    const auto value = Value();
    FIsBlanked = !value;
    if (value)
        Write(*value);
    else
        TakeBack();
    FIsBlanked = false;
}

void TFieldNumberEdit::focusOutEvent(QFocusEvent* event)
{
    QLineEdit::focusOutEvent(event);
    Reload();
}

} // namespace Corvadine
