#pragma once

#include <QFrame>

class QLabel;
class QToolButton;
class QVBoxLayout;

namespace Corvadine {

// A captioned part of the window's layout: a header line with the caption, the content below it.
class TCaptionGroup : public QFrame {
    Q_OBJECT

public:
    explicit TCaptionGroup(const QString& caption, QWidget* parent = nullptr);

    // The widget below the header; the group takes it over. Call once.
    void SetContent(QWidget* content);

    // A small button with a cross at the header's right end.
    QToolButton* AddCloseButton(const QString& accessibleName);

private:
    QWidget* FHeader;
    QVBoxLayout* FRows;
};

} // namespace Corvadine
