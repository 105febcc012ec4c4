#pragma once

#include <QDialogButtonBox>
#include <QString>

#include <vector>

class QDialog;
class QFormLayout;
class QLabel;
class QPushButton;
class QWidget;

// One row of a dialog's form: a field with its label ("&" marks the access key; the
// label becomes the field's buddy), or, with no label, a widget across the whole row.
struct FormRow {
    QString label;
    QWidget* field;
};

// One button of a dialog's button row.
struct FrameButton {
    const char* name; // the button's object name
    QString caption;
    QDialogButtonBox::ButtonRole role;
};

// Who answers Enter: the button box's default button (its first accepting button), or
// only the field it was typed in, for dialogs that walk the operator through their
// boxes with Enter.
enum class EnterKey { DefaultButton, FieldsOnly };

// The parts of a framed dialog, for the dialog to name, connect and fill.
struct DialogFrame {
    QLabel* heading = nullptr;     // none when no heading was given
    QLabel* explanation = nullptr; // none when no explanation was given
    QFormLayout* form = nullptr;
    QDialogButtonBox* buttons = nullptr;

    QPushButton* button(const char* name) const;
};

// Lays `dialog` out the way the console's dialogs look: a heading, an explanation,
// the form and the button row, top to bottom.
DialogFrame frameDialog(QDialog& dialog, const QString& heading, const QString& explanation,
                        const std::vector<FormRow>& rows, const std::vector<FrameButton>& buttons,
                        EnterKey enter = EnterKey::DefaultButton);
