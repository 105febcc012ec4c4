#pragma once

#include "people/log_in.h"

#include <QDialog>

class Console;
class FormHost;
class QLineEdit;
class QPushButton;

// The operator log-in at start-up (frmLog) and the operator switch (frmLog2).
// Start: accepted after a correct password; the caller then shows the main window.
// Switch: on a correct password emits switched() with the main window's new caption,
// tells the operator, and closes.
class LogInDialog : public QDialog {
    Q_OBJECT
public:
    enum class Mode { Start, Switch };

    LogInDialog(Console& console, Mode mode, QWidget* parent = nullptr);

Q_SIGNALS:
    void switched(QString caption);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void nameEntered();
    void nameLeft();
    void passwordEntered();
    void okClicked();

    Console& console_;
    Mode mode_;
    LogIn logIn_;
    QLineEdit* txtuser_ = nullptr;
    QLineEdit* txtpass_ = nullptr;
    bool movingFocus_ = false; // the name step moves the focus itself
    bool finished_ = false;
};

// "Switch User Log Session": the switch dialog over the frame, whose caption follows a
// successful switch.
void openSwitchLog(Console& console, FormHost& host, QWidget* frame);
