#pragma once

#include "people/member_list_model.h"

#include <optional>
#include <utility>

class Database;
class Prompts;

// What the member search (Gsearch) does: its grid follows each key typed into the search
// box, by id or by last and first name, and hands the chosen member on.
class MemberSearch {
public:
    // The option group optwhat, in its order.
    enum class By { Id, Name };

    MemberSearch(const Database& database, Prompts& prompts);

    MemberListModel& list() { return list_; }

    // Every member. False (told) when the table cannot be read.
    bool open();
    // The option chosen; the grid follows the text already typed.
    void setBy(By by);
    By by() const { return by_; }
    // A key typed: the grid shows the members whose id, or last name followed by first
    // name, holds the trimmed text. A text with an apostrophe leaves the grid as it was;
    // Enter tells why.
    void typed(const QString& text);
    // Enter: the search as typed; when it finds nobody the operator is told, and false.
    bool enter();
    // What cmdpassd hands on for `row`: the id, and last name, ", ", first name, " ", middle
    // name as stored; none when there is no such row.
    std::optional<std::pair<QString, QString>> passed(int row) const;

private:
    std::optional<MemberFilter> filterFor(const QString& text) const;
    bool show(const MemberFilter& filter, bool tellEveryFailure);

    Prompts& prompts_;
    MemberListModel list_;
    By by_ = By::Id;
    QString text_;
    QString lastFailure_; // told once while typing, until a search succeeds again
};
