#pragma once

#include "app/FieldEditor.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QWidget>

#include <optional>
#include <vector>

class QLabel;
class QSlider;

namespace Corvadine {

// Shows and edits a Boolean field. A click writes the field.
class TFieldCheckBox : public QCheckBox, public TFieldEditor {
    Q_OBJECT

public:
    TFieldCheckBox(const QString& caption, TProjectsTable& table, TField field, QWidget* parent = nullptr);

protected:
    void ShowValue(const QVariant& value) override;
};

// Shows and edits an integer field with a fixed list of values. A choice writes the field. The box is empty
// if the field has no value or a value that is not in the list.
class TFieldComboBox : public QComboBox, public TFieldEditor {
    Q_OBJECT

public:
    struct TChoice {
        int Value;
        QString Caption;
    };

    TFieldComboBox(
        const std::vector<TChoice>& choices, TProjectsTable& table, TField field, QWidget* parent = nullptr);

protected:
    void ShowValue(const QVariant& value) override;
    void wheelEvent(QWheelEvent* event) override;
};

// Shows and edits an integer field in CompressionRange, as a slider with its number beside it. A move does
// not write the field at once. The new number is written when the slider loses the focus, when the pointer
// leaves the slider, or when the user presses a key that does not move the slider. If the pointer leaves
// during a drag, the number is written when the drag ends. So the field is written before the user can start
// a command by mouse, Alt key or shortcut. If another row becomes current or editing ends, a number that is
// not written yet is dropped.
class TFieldSlider : public QWidget, public TFieldEditor {
    Q_OBJECT

public:
    static constexpr int Minimum = CompressionRange.Least;
    static constexpr int Maximum = CompressionRange.Most;

    TFieldSlider(TProjectsTable& table, TField field, QWidget* parent = nullptr);

    // Returns the number that is shown, or nothing if the control is blank.
    std::optional<int> Value() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void ShowValue(const QVariant& value) override;
    void showEvent(QShowEvent* event) override;

private:
    void Move(int position);
    void Leave();
    void ShowNumber();

    QSlider* FSlider;
    QLabel* FNumber;
    bool FHasValue = false;
    bool FIsMoved = false;   // the slider was moved and the field is not written yet
    bool FIsShowing = false; // the slider is being set by ShowValue(), not by the user
};

// Shows and edits an integer field without a sign, as a line of text. Every keystroke writes the field. While
// the line is empty, the field has its saved value. When the user leaves the empty line, the line shows the
// saved value.
class TFieldNumberEdit : public QLineEdit, public TFieldEditor {
    Q_OBJECT

public:
    TFieldNumberEdit(TProjectsTable& table, TField field, QWidget* parent = nullptr);

    // Returns the number that is shown, or nothing if the control is blank.
    std::optional<int> Value() const;

protected:
    void ShowValue(const QVariant& value) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void WriteText();

    bool FIsBlanked = false; // the user has just emptied the line
};

} // namespace Corvadine
