#pragma once

#include "people/accounts.h"

#include <QDialog>
#include <QPointer>

class Console;
class FormHost;
class QComboBox;
class QLineEdit;
class QModelIndex;
class QPushButton;
class QTableView;

// frmUsers, "System User Maintenance": the operator accounts. What every button and
// Enter key does, and the state of every control in each mode, is AccountsMaintenance's;
// the window shows them and the current account.
class UsersWindow : public QDialog {
    Q_OBJECT
public:
    explicit UsersWindow(Console& console, QWidget* parent = nullptr);

    // The work of the 100 ms timer: the controls take the states of the mode.
    void tick();
    const AccountsMaintenance& accounts() const { return accounts_; }

    void done(int result) override;

private:
    void rowChanged(const QModelIndex& current);
    void newClicked();
    void modifyClicked();
    void saveClicked();
    void deleteClicked();
    void newNameEntered();
    void confirmationEntered();

    // The bound boxes show the current account afresh; what was typed is gone.
    void showAccount();
    void showControls();
    // The grid's current row follows the current account.
    void showCurrentRow();
    // Moves the focus to `box` now, or at the tick that shows it.
    void focusOn(QWidget* box);

    AccountsMaintenance accounts_;
    QTableView* dbusers_ = nullptr;
    QLineEdit* txtuser_ = nullptr;
    QLineEdit* txtnuser_ = nullptr;
    QComboBox* txtutype_ = nullptr;
    QLineEdit* txtkey_ = nullptr;
    QLineEdit* txtconf_ = nullptr;
    QPushButton* cmdnew_ = nullptr;
    QPushButton* cmdmodi_ = nullptr;
    QPushButton* cmdsave_ = nullptr;
    QPushButton* cmddel_ = nullptr;
    QPointer<QWidget> focusNext_;
};

// "System Users for Tarvo": the accounts window over the frame.
void openSystemUsers(Console& console, FormHost& host);
