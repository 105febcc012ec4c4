#pragma once

#include <QDialog>

class Console;
class QLineEdit;

// Shown once, on a database without any operator account: nobody could log in, and only
// an administrator can add accounts, so the first administrator is made here.
class FirstAdminDialog : public QDialog {
    Q_OBJECT
public:
    explicit FirstAdminDialog(Console& console, QWidget* parent = nullptr);

private:
    void save();

    Console& console_;
    QLineEdit* txtuser_ = nullptr;
    QLineEdit* txtkey_ = nullptr;
    QLineEdit* txtconf_ = nullptr;
};

// Asks for the first administrator's name and password (typed twice) and stores the
// account. False when the operator cancels.
bool runFirstAdminDialog(Console& console, QWidget* parent = nullptr);
