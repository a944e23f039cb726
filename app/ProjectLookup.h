#pragma once

#include <QComboBox>

#include <optional>

namespace Corvadine {

class TListGrip;
class TProjectsTable;

// The drop-down that lists the project file of every saved row. The user can size the list at its lower right
// corner. The value is the ID of a project. Only the user and SetValue() set the value: the value does not
// follow the current row. When the project is deleted, the box forgets the value but keeps the text. The
// owner must make the chosen project current.
class TProjectLookup : public QComboBox {
    Q_OBJECT

public:
    // `table` must outlive this object.
    explicit TProjectLookup(TProjectsTable& table, QWidget* parent = nullptr);

    // Shows the project file of the row with the ID `value`, or an empty box if there is no such row. Emits
    // ValueChosen() if `value` is an ID and differs from the former value.
    void SetValue(std::optional<qint64> value);

    // Returns the whole text of the box. The text is the project file, or a message that there is no
    // connection to a database. The box may paint a long text without its middle.
    QString Text() const;

    void showPopup() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    // SetValue() has changed the value to `id`, or the user has chosen `id` from the list. Also emitted if
    // the user chooses the value that is shown already.
    void ValueChosen(qint64 id);

protected:
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void ReadRows();
    int IndexOfValue() const;
    void ShowSelected();
    QWidget* List() const;

    TProjectsTable& FTable;
    std::optional<qint64> FValue;
    QString FText;
    TListGrip* FGrip;
};

} // namespace Corvadine
