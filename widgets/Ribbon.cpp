#include "widgets/Ribbon.h"

#include "widgets/RibbonButton.h"
#include "widgets/Theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>

namespace Corvadine {

namespace {

constexpr int GroupMargin = 5;
constexpr int ButtonSpacing = 1;
constexpr double LineShare = 0.18; // share of the text's color in lines and separators

QColor LineColor(const QPalette& palette)
{
    return Mix(palette.color(QPalette::Window), palette.color(QPalette::WindowText), LineShare);
}

// A row of buttons with a caption below it and a thin line at its right.
class TRibbonGroup : public QWidget {
public:
    TRibbonGroup(const QString& caption, QWidget* parent) : QWidget(parent), FButtons(new QHBoxLayout)
    {
        setAccessibleName(caption);
        FButtons->setSpacing(ButtonSpacing);
        auto* label = new QLabel(caption, this);
        label->setAlignment(Qt::AlignHCenter);
        label->setForegroundRole(QPalette::PlaceholderText);
        QFont font = label->font();
        font.setPointSizeF(font.pointSizeF() * 0.9);
        label->setFont(font);

        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(GroupMargin, GroupMargin, GroupMargin + 1, 3);
        layout->setSpacing(1);
        layout->addLayout(FButtons);
        layout->addWidget(label);
    }

    QHBoxLayout* Buttons() const { return FButtons; }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.fillRect(
            QRect(width() - 1, 2 * GroupMargin, 1, height() - 4 * GroupMargin), LineColor(palette()));
    }

private:
    QHBoxLayout* FButtons;
};

} // namespace

TRibbon::TRibbon(QWidget* parent) : QWidget(parent), FLayout(new QHBoxLayout(this))
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    FLayout->setContentsMargins(2, 0, 2, 1);
    FLayout->setSpacing(0);
    FLayout->addStretch();
}

QToolButton* TRibbon::AddButton(const QString& group, QAction& action)
{
    auto* button = new TRibbonButton(action, this);
    ButtonsOf(group)->addWidget(button);
    return button;
}

void TRibbon::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QColor window = palette().color(QPalette::Window);
    painter.fillRect(rect(), IsDark(palette()) ? window.lighter(115) : Mix(window, Qt::white, 0.7));
    painter.fillRect(QRect(0, height() - 1, width(), 1), LineColor(palette()));
}

QHBoxLayout* TRibbon::ButtonsOf(const QString& group)
{
    const auto known = std::ranges::find(FGroups, group, &TGroup::Caption);
    if (known != FGroups.end())
        return known->Buttons;
    auto* widget = new TRibbonGroup(group, this);
    FLayout->insertWidget(FLayout->count() - 1, widget);
    FGroups.push_back({ group, widget->Buttons() });
    return widget->Buttons();
}

} // namespace Corvadine
