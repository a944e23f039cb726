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

// Returns the named colors of SVG 1.1, section 4.4 (https://www.w3.org/TR/SVG11/types.html#ColorKeywords). A
// color with two names is listed once. The neutral colors come first, from white to black. The other colors
// follow in the order of the color circle. The other colors are split into runs of NamedColorRun colors.
// Within each run, the colors go from light to dark.
const std::vector<TNamedColor>& NamedColors();

inline constexpr int NamedColorRun = 10; // also the number of rows in TColorList

// The drop-down of the color box: the named colors as swatches, column by column, and the button "More…". The
// list closes and deletes itself after a choice or a click outside.
class TColorList : public QFrame {
    Q_OBJECT

public:
    // Marks `current` if it is one of the named colors.
    TColorList(const QColor& current, QWidget* parent);

    // Opens at DropDownPlace() of `box`.
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
