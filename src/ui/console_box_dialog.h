#pragma once

#include "base/prompts.h"

#include <QDialog>

class Clock;
class QLabel;
class QLineEdit;
class QPushButton;
class QTimer;

// The console's own box (MyMsgbox). "Message": a notice with an OK label that, when
// Timer1 runs, counts down "OK(n)" and closes itself. "Input": a short input with a
// cancel label; an input never closes by itself.
class ConsoleBoxDialog : public QDialog {
    Q_OBJECT
public:
    explicit ConsoleBoxDialog(Clock& clock, QWidget* parent = nullptr);

    // Takes the title and text when given, the extra text when not empty, each timer
    // interval when given, the mode and the masking character. The box opens on show.
    void setBox(const Prompts::ConsoleBox& box);

    QString mode() const { return mode_; }
    // Set on closing: the typed text in "Input" mode, "" in "Message" mode or when the
    // operator cancelled.
    QString resultText() const { return result_; }

    // Whole seconds left before Timer1 closes the box.
    static int secondsLeft(int timer1IntervalMs, qint32 elapsedMs);

    void done(int r) override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    void opening();
    void refreshCountdown();

    Clock& clock_;
    QString mode_ = QStringLiteral("Message");
    QString result_;
    qint32 openedAt_ = 0;
    QLabel* messageLabel_ = nullptr;
    QLabel* extraLabel_ = nullptr;
    QPushButton* okButton_ = nullptr;
    QLineEdit* input_ = nullptr;
    QPushButton* cancelPicture_ = nullptr;
    QPushButton* cancelButton_ = nullptr;
    QTimer* closeTimer_ = nullptr;
    QTimer* countdownTimer_ = nullptr;
};
