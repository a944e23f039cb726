#pragma once

#include <QLabel>

namespace Corvadine {

// An explaining text on a light yellow background, word-wrapped. The background is light in every color
// scheme, so the letters are dark in every scheme too. The text may be rich text.
class TNoteLabel : public QLabel {
    Q_OBJECT
public:
    explicit TNoteLabel(const QString& text, QWidget* parent = nullptr);
};

} // namespace Corvadine
