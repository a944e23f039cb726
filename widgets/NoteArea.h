#pragma once

#include <QScrollArea>

class QLabel;

namespace Corvadine {

// A note (TNoteLabel) that is as high as its text. If there is not enough room for the text, a scroll
// bar appears.
class TNoteArea : public QScrollArea {
    Q_OBJECT

public:
    // The text is plain and wrapped at `width` pixels.
    TNoteArea(const QString& text, int width, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void changeEvent(QEvent* event) override;

private:
    QLabel* FNote;
};

} // namespace Corvadine
