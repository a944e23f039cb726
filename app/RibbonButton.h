#pragma once

#include <QStringList>
#include <QToolButton>

namespace Corvadine {

class TFormAction;

// One large button of the ribbon: a 32-pixel icon with its caption underneath, broken into at most two lines.
// Never takes the keyboard focus and shows no hint.
class TRibbonButton : public QToolButton {
    Q_OBJECT

public:
    // Shows and carries out `action`, which must outlive it.
    explicit TRibbonButton(TFormAction& action, QWidget* parent = nullptr);

    // Makes it a toggle. Switching it by setChecked() does not carry out its action.
    void SetCheckable(bool checkable);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QStringList Lines() const;
    void PaintBackground(QPainter& painter) const;

    TFormAction& FAction;
};

} // namespace Corvadine
