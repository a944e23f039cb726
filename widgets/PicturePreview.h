#pragma once

#include <QFrame>
#include <QImage>

namespace Corvadine {

// Shows one picture, scaled to fit with its aspect kept, or a text in its place.
class TPicturePreview : public QFrame {
    Q_OBJECT
public:
    explicit TPicturePreview(QWidget* parent = nullptr);

    // Shows `image`; if `image` is null, shows `text`. A screen reader speaks the text.
    void SetImage(const QImage& image, const QString& text = {});

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage FImage;
};

} // namespace Corvadine
