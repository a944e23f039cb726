#pragma once

#include <QComboBox>

namespace Corvadine {

// A drop-down to choose one file: a tree of the drives and folders with the files that match the masks. Its
// text is the chosen file's full path in the system's own form, and can be typed or pasted as well.
class TShellDropDown : public QComboBox {
    Q_OBJECT
public:
    explicit TShellDropDown(const QStringList& masks, QWidget* parent = nullptr);

    // Where the tree opens while the text names nothing that exists. Missing folders are ignored.
    void SetStartFolder(const QString& folder);

    // Width of the tree in pixels.
    void SetPopupWidth(int width) { FPopupWidth = width; }

    void showPopup() override;
    void hidePopup() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    QString PathToShow() const;

    QStringList FMasks;
    QString FStartFolder;
    int FPopupWidth = 0;
};

} // namespace Corvadine
