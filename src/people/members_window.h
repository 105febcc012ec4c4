#pragma once

#include "people/members_desk.h"

#include <QWidget>

#include <functional>

class Console;
class FormHost;
class QButtonGroup;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;

// Members: the members register. The grid of members, the boxes of the current one, and
// the buttons to add, edit, delete, find and browse them, to log one on a terminal and to
// print the list. What each does is MembersDesk's; the window shows it.
class MembersWindow : public QWidget {
    Q_OBJECT
public:
    // Where cmdlog hands the member: the log-on dialog.
    using HandOn = std::function<void(const QString& id, const QString& name)>;

    MembersWindow(Console& console, FormHost& host, HandOn handOn, QWidget* parent = nullptr);

    Console& console() { return console_; }
    MembersDesk& desk() { return desk_; }
    QSize sizeHint() const override;

private:
    QWidget* buildSearchBar();
    QWidget* buildDetails();
    QWidget* buildButtons();
    QLineEdit* field(const char* name, int maxLength);
    Member typed() const;
    void showMember(const Member& member);
    void showMode();
    void showCount();
    void selectRow(int row);
    void closeClicked();

    Console& console_;
    FormHost& host_;
    HandOn handOn_;
    MembersDesk desk_;
    QLineEdit* txtskey_ = nullptr;
    QButtonGroup* optwhat_ = nullptr;
    QTableView* grid_ = nullptr;
    QLabel* count_ = nullptr;
    QLineEdit* txtid_ = nullptr;
    QLineEdit* txtln_ = nullptr;
    QLineEdit* txtFn_ = nullptr;
    QLineEdit* txtMn_ = nullptr;
    QLineEdit* txtadr_ = nullptr;
    QLineEdit* txtdisc_ = nullptr;
    QLineEdit* txtstat_ = nullptr;
    QLineEdit* txtmbdate_ = nullptr;
    QLineEdit* txtAccu_ = nullptr;
    QPushButton* cmdAddM_ = nullptr;
    QPushButton* cmdedit_ = nullptr;
    QPushButton* cmdclose_ = nullptr;
    QList<QWidget*> browsingOnly_; // usable only while no member is being typed
};

// The grid of members both member windows show, under the register's captions.
QTableView* makeMembersGrid(MemberListModel& list, QWidget* parent);

// "Clients Section": the members register in the frame, or the one already open brought
// forward.
void openMembersRegister(Console& console, FormHost& host);
