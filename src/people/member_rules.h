#pragma once

#include <QDate>
#include <QString>

#include <optional>

// A member as the register's boxes and grid show it: every field as text.
struct Member {
    QString id;         // CID
    QString lastName;   // LN
    QString firstName;  // FN
    QString middleName; // MN
    QString address;    // ADR
    QString discount;   // Disc, digits
    QString status;     // Status
    QString since;      // mdate, "MM/DD/YYYY"
    QString hours;      // Accuhrs, digits

    bool operator==(const Member&) const = default;
};

// The id the next member gets, from the number of members already registered: "ID-00001"
// for none, else the first (8 - digits of n) characters of "ID-00001" followed by n + 1.
// The count is of rows, so the id grows a character each time n + 1 gains a digit (9 rows
// give "ID-000010") and repeats an existing id after a deletion: the ids already handed
// out were made this way, and new ones must look like them. From 10^8 members on, the
// ids are n + 1 alone.
QString nextMemberId(qint32 rows);

// The name the register hands to the log-on dialog: trimmed last name, ", ", trimmed first
// name, " ", trimmed middle name.
QString logOnName(const Member& member);
// The name the member search hands on: the fields as stored, joined the same way.
QString searchName(const Member& member);

// Whether a key typing `text` may reach a digits-only box (discount, accumulated hours):
// the digits 0-9, and keys that type no printable character (Backspace, the arrows, Tab,
// Enter, Ctrl shortcuts). Every other printable key is discarded.
bool acceptsDigitKey(const QString& text);

// Why typed fields cannot be stored, as the operator is told it.
struct MemberRefusal {
    QString text;
    QString title;
};
// The first thing wrong with `member` as typed in the register's boxes, or none: an
// apostrophe anywhere, no id, no last name, a discount or hours that are not digits (a
// paste gets past the key filter), or a membership date not written MM/DD/YYYY.
std::optional<MemberRefusal> memberRefusal(const Member& member);

// What the operator is told of a search key with an apostrophe, which no search takes.
QString quotedSearchKey(const QString& key);

// The membership date as typed ("MM/DD/YYYY"), or an invalid date.
QDate typedMemberDate(const QString& text);
