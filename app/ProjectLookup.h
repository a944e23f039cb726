#pragma once

#include <QComboBox>

#include <optional>

namespace Corvadine {

class TListGrip;
class TProjectsTable;

// The drop-down that lists the project file of every saved row; it can be sized by its lower right corner.
// Its value is a project's ID. It is not bound to the current row: only the user and SetValue() change the
// value, so after a delete, for instance, it still shows the text it had. Following the value with the
// current row is the owner's part.
class TProjectLookup : public QComboBox {
    Q_OBJECT

public:
    // `table` must outlive it.
    explicit TProjectLookup(TProjectsTable& table, QWidget* parent = nullptr);

    std::optional<qint64> Value() const { return FValue; }

    // Shows the row with this ID, nothing if there is none, and announces a value that has changed to an ID.
    void SetValue(std::optional<qint64> value);

    // The whole text that it shows, which may be cut in the middle.
    const QString& Text() const { return FText; }

    void showPopup() override;
    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    // The value is now `id`, set by SetValue() or chosen from the list; choosing what it is already announces
    // it again.
    void ValueChosen(qint64 id);

protected:
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void ReadRows();
    void ShowSelected();
    QWidget* List() const;

    TProjectsTable& FTable;
    std::optional<qint64> FValue;
    QString FText;
    TListGrip* FGrip;
};

} // namespace Corvadine
