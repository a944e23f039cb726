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

// A Boolean field; a click writes it.
class TFieldCheckBox : public QCheckBox, public TFieldEditor {
    Q_OBJECT

public:
    TFieldCheckBox(const QString& caption, TProjectsTable& table, TField field, QWidget* parent = nullptr);

protected:
    void ShowValue(const QVariant& value) override;
};

// An integer field with a fixed list of values; a choice writes it. A value that is not in the list, or none,
// shows as an empty box.
class TFieldComboBox : public QComboBox, public TFieldEditor {
    Q_OBJECT

public:
    struct TChoice {
        int Value;
        QString Caption;
    };

    TFieldComboBox(
        const std::vector<TChoice>& choices, TProjectsTable& table, TField field, QWidget* parent = nullptr);

    // What it shows.
    std::optional<int> Value() const;

protected:
    void ShowValue(const QVariant& value) override;
    void wheelEvent(QWheelEvent* event) override;
};

// An integer field in CompressionRange, as a slider with its number beside it. A move is written when the
// slider is left and not before: when it loses the focus, when the pointer goes (after a drag has ended), or
// on a key that is none of the slider's own. Thus whoever drags it and then reaches for a command by mouse,
// Alt key or shortcut finds the change made by the time the command is carried out. While moved and not yet
// left, the number shown is the slider's; a move of the row or the end of an edit drops it.
class TFieldSlider : public QWidget, public TFieldEditor {
    Q_OBJECT

public:
    static constexpr int Minimum = CompressionRange.Least;
    static constexpr int Maximum = CompressionRange.Most;

    TFieldSlider(TProjectsTable& table, TField field, QWidget* parent = nullptr);

    // What it shows.
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
    bool FIsMoved = false;   // the slider shows what the field does not hold yet
    bool FIsShowing = false; // moved by us, not by the user
};

// An integer field without a sign, as a line of text; every keystroke writes it. An empty line is an absent
// number.
class TFieldNumberEdit : public QLineEdit, public TFieldEditor {
    Q_OBJECT

public:
    TFieldNumberEdit(TProjectsTable& table, TField field, QWidget* parent = nullptr);

    // What it shows.
    std::optional<int> Value() const;

protected:
    void ShowValue(const QVariant& value) override;
    void focusOutEvent(QFocusEvent* event) override;
};

} // namespace Corvadine
