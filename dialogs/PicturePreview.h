#pragma once

#include <QFrame>
#include <QImage>

namespace Corvadine {

// Shows one picture, scaled to fit with its proportions kept.
class TPicturePreview : public QFrame {
    Q_OBJECT
public:
    explicit TPicturePreview(QWidget* parent = nullptr);

    // The picture; a null one shows nothing.
    const QImage& Image() const { return FImage; }
    void SetImage(const QImage& image);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage FImage;
};

} // namespace Corvadine
