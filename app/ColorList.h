#pragma once

#include <QColor>
#include <QFrame>
#include <QString>

#include <vector>

class QModelIndex;
class QTableView;

namespace Corvadine {

struct TNamedColor {
    QString Name;
    QColor Color;
};

// The named colours that X11 and the web share, each colour once (SVG 1.1, section 4.4,
// https://www.w3.org/TR/SVG11/types.html#ColorKeywords): first the neutral ones from white to black, then
// around the colour circle. Runs of NamedColorRun neighbours go from light to dark.
const std::vector<TNamedColor>& NamedColors();
inline constexpr int NamedColorRun = 10;

// The drop-down of the colour box: the named colours as swatches, by columns, and the button "More…". Closes
// and deletes itself once something is chosen or the user turns elsewhere.
class TColorList : public QFrame {
    Q_OBJECT

public:
    // `current` is marked if it is among the colours.
    TColorList(const QColor& current, QWidget* parent);

    // Opens under `box`, or above it where the screen ends.
    void OpenAt(const QWidget& box);

signals:
    void ColorChosen(const QColor& color);
    void MoreRequested();

protected:
    void mousePressEvent(QMouseEvent* event) override;

private:
    void Choose(const QModelIndex& index);

    QTableView* FView;
};

} // namespace Corvadine
