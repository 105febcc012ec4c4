#pragma once

#include "people/member_list_model.h"
#include "people/member_register.h"

#include <QObject>

class Clock;
class Database;
class Prompts;

// What the members register does on each of its buttons, for a window that only shows it:
// the grid's list, the member its boxes show and whether they can be typed in, and the
// captions of the buttons that change with the state.
class MembersDesk : public QObject {
    Q_OBJECT
public:
    enum class Mode { Browsing, Adding, Editing };
    // The search field group optwhat, in its order.
    enum class FindBy { LastName, FirstName, Id };

    MembersDesk(const Database& database, Prompts& prompts, const Clock& clock,
                QObject* parent = nullptr);

    MemberListModel& list() { return list_; }
    Mode mode() const { return mode_; }
    bool fieldsEditable() const { return mode_ != Mode::Browsing; }
    QString addCaption() const;   // cmdAddM
    QString editCaption() const;  // cmdedit
    QString closeCaption() const; // cmdclose

    // Every member, the first one current. False (told) when the table cannot be read.
    bool open();
    // The grid's current row (-1: none); while browsing, the boxes follow it.
    void setCurrentRow(int row);
    int currentRow() const { return currentRow_; }
    // What the boxes show for the current row (blank when there is none).
    Member currentMember() const;

    // cmdAddM: "Add Member" begins a new member in the boxes; "Save New" writes what was
    // typed and goes to it.
    void addPressed(const Member& typed);
    // cmdedit: "Edit Info" opens the current member to typing; "Save Edit" writes it.
    void editPressed(const Member& typed);
    // cmdclose: "Abandon" gives up the member being typed; "Close" answers true, the window
    // is to close.
    bool closePressed();
    // cmddel: asks, then removes the current member and goes to the last row.
    void deletePressed();
    // cmdfind: the members whose field holds the key, by last name.
    void findPressed(FindBy by, const QString& key);
    // cmdBrw: every member again.
    void browsePressed();
    // cmdlog: the current member's id and name for the log-on dialog, or none (told).
    std::optional<std::pair<QString, QString>> logOnMember();

Q_SIGNALS:
    // The captions and whether the boxes can be typed in changed.
    void modeChanged();
    // The boxes are to show `member`.
    void fieldsChanged(const Member& member);
    // The grid is to make `row` current (-1: none).
    void currentRowChanged(int row);

private:
    bool show(const MemberFilter& filter);
    void goTo(int row);
    void setMode(Mode mode);
    void tellEmpty();
    void tellFailure(const QString& what, const QString& why);

    Prompts& prompts_;
    const Clock& clock_;
    MemberListModel list_;
    MemberRegister register_;
    Mode mode_ = Mode::Browsing;
    int currentRow_ = -1;
    std::optional<MemberRow> editing_; // the row as read when Edit Info was pressed
};
