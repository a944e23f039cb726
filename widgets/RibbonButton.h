#pragma once

#include <QStringList>
#include <QToolButton>

namespace Corvadine {

// A large button of the ribbon: a 32-pixel icon above a caption of at most two lines. The button never takes
// the keyboard focus and shows no tool tip.
class TRibbonButton : public QToolButton {
    Q_OBJECT

public:
    // The button shows `action`, and a click carries it out. `action` must outlive the button. For a
    // checkable action, setChecked() on the button also switches the action, without carrying it out.
    explicit TRibbonButton(QAction& action, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QStringList Lines() const;
    void PaintBackground(QPainter& painter) const;
};

} // namespace Corvadine
