#include "people/member_register.h"

#include "base/prompts.h"
#include "store/database.h"

namespace {

// The values of the columns CID, LN, FN, MN, ADR, Disc, Status, mdate, Accuhrs, from
// fields memberRefusal() accepted.
QVariantList stored(const Member& m) {
    const QDate since = typedMemberDate(m.since);
    return {m.id.trimmed(),
            m.lastName.trimmed(),
            m.firstName.trimmed(),
            m.middleName.trimmed(),
            m.address.trimmed(),
            m.discount.trimmed().toLongLong(),
            m.status.trimmed(),
            since.isValid() ? QVariant(since) : QVariant(),
            m.hours.trimmed().toLongLong()};
}

// The row as it was read: by rowid, and by its id, so that nothing else is written over.
const QString SameRow = QStringLiteral(" WHERE rowid = ? AND CID IS ?");

} // namespace

MemberRegister::MemberRegister(const Database& database, Prompts& prompts)
    : database_(database), prompts_(prompts) {}

int MemberRegister::count() const {
    DbSession s(database_);
    auto q = s.run(QStringLiteral("SELECT count(*) FROM members"));
    return q.next() ? q.value(0).toInt() : 0;
}

bool MemberRegister::refused(const Member& member) {
    const auto refusal = memberRefusal(member);
    if (refusal)
        prompts_.message(refusal->text, refusal->title, Prompts::Icon::Exclamation);
    return refusal.has_value();
}

void MemberRegister::tellFailure(const QString& what, const StoreError& error) {
    prompts_.message(QStringLiteral("%1: %2\nNothing was changed.").arg(what, error.text()),
                     QStringLiteral("Members"), Prompts::Icon::Critical);
}

MemberRegister::Outcome MemberRegister::outcome(qint64 changed, const MemberRow& read) {
    if (changed > 0)
        return Outcome::Written;
    prompts_.message(QStringLiteral("The member %1 is no longer in the register as it was read: "
                                    "another program changed it. Nothing was changed; the list "
                                    "is read again.")
                         .arg(read.member.id),
                     QStringLiteral("Members"), Prompts::Icon::Exclamation);
    return Outcome::RowGone;
}

std::optional<qint64> MemberRegister::add(const Member& member) {
    if (refused(member))
        return std::nullopt;
    try {
        DbSession s(database_);
        auto q = s.run(QStringLiteral("INSERT INTO members (CID, LN, FN, MN, ADR, Disc, Status, "
                                      "mdate, Accuhrs) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"),
                       stored(member));
        return q.lastInsertId().toLongLong();
    } catch (const StoreError& e) {
        tellFailure(QStringLiteral("The member %1 was not saved").arg(member.id.trimmed()), e);
        return std::nullopt;
    }
}

MemberRegister::Outcome MemberRegister::update(const MemberRow& read, const Member& member) {
    if (refused(member))
        return Outcome::NotWritten;
    try {
        DbSession s(database_);
        QVariantList values = stored(member);
        values << read.key.rowid << read.key.id;
        auto q = s.run(QStringLiteral("UPDATE members SET CID = ?, LN = ?, FN = ?, MN = ?, "
                                      "ADR = ?, Disc = ?, Status = ?, mdate = ?, Accuhrs = ?") +
                           SameRow,
                       values);
        return outcome(q.numRowsAffected(), read);
    } catch (const StoreError& e) {
        tellFailure(QStringLiteral("The member %1 was not saved").arg(read.member.id), e);
        return Outcome::NotWritten;
    }
}

MemberRegister::Outcome MemberRegister::remove(const MemberRow& read) {
    try {
        DbSession s(database_);
        auto q =
            s.run(QStringLiteral("DELETE FROM members") + SameRow, {read.key.rowid, read.key.id});
        return outcome(q.numRowsAffected(), read);
    } catch (const StoreError& e) {
        tellFailure(QStringLiteral("The member %1 was not removed").arg(read.member.id), e);
        return Outcome::NotWritten;
    }
}
