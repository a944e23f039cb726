#pragma once

#include <QComboBox>

namespace Corvadine {

// A field for the path of one file, with a drop-down tree to choose the file from. The tree has drives,
// folders and the files that match the masks. The text is the full path of the chosen file, with the system's
// own delimiters. The text can also be typed or pasted.
class TShellDropDown : public QComboBox {
    Q_OBJECT
public:
    explicit TShellDropDown(const QStringList& masks, QWidget* parent = nullptr);

    // Sets the folder where the tree opens if the text does not name an existing file or folder. A folder
    // that does not exist is ignored.
    void SetStartFolder(const QString& folder);

    // Sets the width of the tree in pixels.
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
