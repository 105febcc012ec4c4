#include "people/member_rules.h"

#include "store/database.h"

#include <QDate>
#include <QRegularExpression>

namespace {

const QString FirstId = QStringLiteral("ID-00001");
const QString NotSaved = QStringLiteral("Not saved");
// Nine digits stay exact in the table's number columns and in a 32-bit count.
constexpr int MostDigits = 9;

bool digitsOnly(const QString& text) {
    static const QRegularExpression digits(QStringLiteral("^[0-9]*$"));
    return digits.match(text).hasMatch();
}

} // namespace

QString nextMemberId(qint32 rows) {
    if (rows <= 0)
        return FirstId;
    const QString next = QString::number(qint64(rows) + 1);
    const qsizetype kept = qMax<qsizetype>(0, FirstId.size() - QString::number(rows).size());
    return FirstId.left(kept) + next;
}

QString logOnName(const Member& m) {
    return m.lastName.trimmed() + QStringLiteral(", ") + m.firstName.trimmed() + QLatin1Char(' ') +
           m.middleName.trimmed();
}

QString searchName(const Member& m) {
    return m.lastName + QStringLiteral(", ") + m.firstName + QLatin1Char(' ') + m.middleName;
}

bool acceptsDigitKey(const QString& text) {
    if (text.isEmpty())
        return true;
    const QChar c = text.front();
    if (!c.isPrint())
        return true;
    return text.size() == 1 && c >= u'0' && c <= u'9';
}

QDate typedMemberDate(const QString& text) {
    const QString t = text.trimmed();
    for (const char* form : {"MM/dd/yyyy", "M/d/yyyy"}) {
        const QDate d = QDate::fromString(t, QString::fromLatin1(form));
        if (d.isValid())
            return d;
    }
    return {};
}

std::optional<MemberRefusal> memberRefusal(const Member& m) {
    for (const QString* field : {&m.id, &m.lastName, &m.firstName, &m.middleName, &m.address,
                                 &m.discount, &m.status, &m.since, &m.hours})
        if (hasQuote(*field))
            return MemberRefusal{QStringLiteral("\"%1\" holds an apostrophe ( ' ), which the "
                                                "console cannot store. Type it without one.")
                                     .arg(*field),
                                 NotSaved};
    if (m.id.trimmed().isEmpty())
        return MemberRefusal{QStringLiteral("A member needs an ID."), NotSaved};
    if (m.lastName.trimmed().isEmpty())
        return MemberRefusal{QStringLiteral("Type the member's last name."), NotSaved};
    const std::pair<const QString*, const char*> numbers[] = {{&m.discount, "The discount"},
                                                              {&m.hours, "The accumulated hours"}};
    for (const auto& [value, what] : numbers)
        if (!digitsOnly(value->trimmed()) || value->trimmed().size() > MostDigits)
            return MemberRefusal{QStringLiteral("%1 must be a whole number of at most %2 digits, "
                                                "not \"%3\".")
                                     .arg(QString::fromLatin1(what))
                                     .arg(MostDigits)
                                     .arg(*value),
                                 NotSaved};
    if (!m.since.trimmed().isEmpty() && !typedMemberDate(m.since).isValid())
        return MemberRefusal{QStringLiteral("\"%1\" is not a date. Type the membership date as "
                                            "MM/DD/YYYY, as in 11/15/2026.")
                                 .arg(m.since),
                             NotSaved};
    return std::nullopt;
}

QString quotedSearchKey(const QString& key) {
    return QStringLiteral("\"%1\" holds an apostrophe ( ' ), which no search can hold. Type the "
                          "key without it.")
        .arg(key);
}
