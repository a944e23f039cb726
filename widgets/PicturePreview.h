#pragma once

#include <QFrame>
#include <QImage>

namespace Corvadine {

// Shows one picture, scaled to fit with its aspect kept.
class TPicturePreview : public QFrame {
    Q_OBJECT
public:
    explicit TPicturePreview(QWidget* parent = nullptr);

    // A null picture shows nothing.
    void SetImage(const QImage& image);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage FImage;
};

} // namespace Corvadine
