#pragma once

#include <QScrollArea>

class QLabel;

namespace Corvadine {

// A note (TNoteLabel) as high as its text where there is room for that, and lower with a scroll bar where
// there is not, as with a larger font.
class TNoteArea : public QScrollArea {
    Q_OBJECT

public:
    // Plain text, wrapped at `width`.
    TNoteArea(const QString& text, int width, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void changeEvent(QEvent* event) override;

private:
    QLabel* FNote;
};

} // namespace Corvadine
