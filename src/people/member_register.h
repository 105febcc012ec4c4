#pragma once

#include "people/member_list_model.h"
#include "people/member_rules.h"

#include <optional>

class Database;
class Prompts;
struct StoreError;

// The writes of the members register. Each checks what was typed first (memberRefusal)
// and tells the operator why nothing was written; a database failure is told the same
// way. Edits and deletions name the row by its rowid and the id it was read with, so a row
// another program changed meanwhile is left alone.
class MemberRegister {
public:
    MemberRegister(const Database& database, Prompts& prompts);

    // How many members there are. Throws StoreError.
    int count() const;
    enum class Outcome {
        Written,
        NotWritten, // refused or failed, and told: the operator may try again
        RowGone,    // told: the row is not there as it was read, the list must be read again
    };

    // The new member's rowid, or none when refused or not written.
    std::optional<qint64> add(const Member& member);
    Outcome update(const MemberRow& read, const Member& member);
    Outcome remove(const MemberRow& read);

private:
    bool refused(const Member& member);
    Outcome outcome(qint64 changed, const MemberRow& read);
    void tellFailure(const QString& what, const StoreError& error);

    const Database& database_;
    Prompts& prompts_;
};
