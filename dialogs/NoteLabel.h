#pragma once

#include <QLabel>

namespace Corvadine {

// A text that explains, word-wrapped on a light yellow ground; dark letters in every colour scheme, since the
// ground does not change with it. May hold rich text.
class TNoteLabel : public QLabel {
    Q_OBJECT
public:
    explicit TNoteLabel(const QString& text, QWidget* parent = nullptr);
};

} // namespace Corvadine
