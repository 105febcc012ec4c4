#include "ui/dialog_frame.h"

#include <QDialog>
#include <QEvent>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr qreal HeadingScale = 1.4;
constexpr int SectionGap = 8;

// A button box that never picks a default button of its own when shown, so that Enter
// in a field is answered by that field alone and not a second time by a button.
class FieldsFirstButtonBox final : public QDialogButtonBox {
public:
    using QDialogButtonBox::QDialogButtonBox;

protected:
    bool event(QEvent* event) override {
        if (event->type() == QEvent::Show)
            return QWidget::event(event); // skips the box's choice of a default button
        return QDialogButtonBox::event(event);
    }
};

} // namespace

QPushButton* DialogFrame::button(const char* name) const {
    return buttons->findChild<QPushButton*>(QString::fromLatin1(name));
}

DialogFrame frameDialog(QDialog& dialog, const QString& heading, const QString& explanation,
                        const std::vector<FormRow>& rows, const std::vector<FrameButton>& buttons,
                        EnterKey enter) {
    DialogFrame frame;
    auto* layout = new QVBoxLayout(&dialog);
    if (!heading.isEmpty()) {
        frame.heading = new QLabel(heading, &dialog);
        QFont font = frame.heading->font();
        font.setPointSizeF(font.pointSizeF() * HeadingScale);
        font.setBold(true);
        frame.heading->setFont(font);
        layout->addWidget(frame.heading);
    }
    if (!explanation.isEmpty()) {
        frame.explanation = new QLabel(explanation, &dialog);
        frame.explanation->setWordWrap(true);
        layout->addWidget(frame.explanation);
    }
    if (frame.heading || frame.explanation)
        layout->addSpacing(SectionGap);

    frame.form = new QFormLayout;
    bool grows = false; // a list or text box takes the room the dialog is given
    for (const FormRow& row : rows) {
        if (row.label.isEmpty())
            frame.form->addRow(row.field);
        else
            frame.form->addRow(row.label, row.field);
        grows = grows || (row.field->sizePolicy().verticalPolicy() & QSizePolicy::ExpandFlag);
    }
    layout->addLayout(frame.form, grows ? 1 : 0);
    layout->addSpacing(SectionGap);
    // Otherwise the room is left below the form, and the buttons stay at the bottom.
    if (!grows)
        layout->addStretch(1);

    frame.buttons = enter == EnterKey::FieldsOnly ? new FieldsFirstButtonBox(&dialog)
                                                  : new QDialogButtonBox(&dialog);
    for (const FrameButton& b : buttons) {
        QPushButton* button = frame.buttons->addButton(b.caption, b.role);
        button->setObjectName(QString::fromLatin1(b.name));
        // A button that became default on taking the focus would answer Enter too.
        if (enter == EnterKey::FieldsOnly)
            button->setAutoDefault(false);
    }
    layout->addWidget(frame.buttons);
    return frame;
}
