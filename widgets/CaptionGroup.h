#pragma once

#include <QFrame>

class QLabel;
class QToolButton;
class QVBoxLayout;

namespace Corvadine {

// A part of the window: a header line with a caption, and the content below the header.
class TCaptionGroup : public QFrame {
    Q_OBJECT

public:
    explicit TCaptionGroup(const QString& caption, QWidget* parent = nullptr);

    // Puts `content` below the header and takes ownership of it. Call once.
    void SetContent(QWidget* content);

    // Adds a small button with a cross at the right end of the header.
    QToolButton* AddCloseButton(const QString& accessibleName);

private:
    QWidget* FHeader;
    QVBoxLayout* FRows;
};

} // namespace Corvadine
