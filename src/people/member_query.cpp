#include "people/member_query.h"

#include <algorithm>

namespace {

const QString Columns =
    QStringLiteral("SELECT rowid, CID, LN, FN, MN, ADR, Disc, Status, mdate, Accuhrs FROM members");
// The order of the name index tarvo_members_name, so that no search sorts.
const QString ByName =
    QStringLiteral(" ORDER BY LN COLLATE NOCASE, FN COLLATE NOCASE, CID COLLATE NOCASE, rowid");
const QString ByEntry = QStringLiteral(" ORDER BY rowid");
// The same orders backwards, for counting from the end.
const QString ByNameBack = QStringLiteral(" ORDER BY LN COLLATE NOCASE DESC, FN COLLATE NOCASE "
                                          "DESC, CID COLLATE NOCASE DESC, rowid DESC");
const QString ByEntryBack = QStringLiteral(" ORDER BY rowid DESC");
// COLLATE on the values: a file made by another tool has columns that compare exactly,
// and the index compares without regard to case.
const QString AfterName = QStringLiteral(
    "(LN, FN, CID, rowid) > (? COLLATE NOCASE, ? COLLATE NOCASE, ? COLLATE NOCASE, ?)");

QString expressionOf(MemberField field) {
    switch (field) {
    case MemberField::LastName:
        return QStringLiteral("LN");
    case MemberField::FirstName:
        return QStringLiteral("FN");
    case MemberField::Id:
        return QStringLiteral("CID");
    case MemberField::Name:
        return QStringLiteral("LN || FN"); // empty when either is missing, as LN+FN was
    }
    return {};
}

// The filter's condition (without WHERE), or an empty text for every member.
MemberStatement condition(const MemberFilter& filter) {
    if (!filter.field)
        return {};
    return memberQuery::holds(expressionOf(*filter.field), filter.text);
}

QString where(const QStringList& conditions) {
    QStringList kept = conditions;
    kept.removeAll(QString());
    return kept.isEmpty() ? QString()
                          : QStringLiteral(" WHERE ") + kept.join(QStringLiteral(" AND "));
}

QString order(const MemberFilter& filter, bool backwards = false) {
    if (backwards)
        return filter.field ? ByNameBack : ByEntryBack;
    return filter.field ? ByName : ByEntry;
}

bool isAsciiLetterOrNoCase(char32_t c) {
    return c < 128 || QChar::toLower(c) == QChar::toUpper(c);
}

} // namespace

namespace memberQuery {

MemberStatement holds(const QString& expression, const QString& text) {
    const QList<uint> points = text.toUcs4();
    if (std::all_of(points.begin(), points.end(), isAsciiLetterOrNoCase)) {
        QString pattern = text;
        pattern.replace(QLatin1Char('\\'), QStringLiteral("\\\\"))
            .replace(QLatin1Char('%'), QStringLiteral("\\%"))
            .replace(QLatin1Char('_'), QStringLiteral("\\_"));
        return {expression + QStringLiteral(" LIKE ? ESCAPE '\\'"),
                {QLatin1Char('%') + pattern + QLatin1Char('%')}};
    }
    QString pattern = QStringLiteral("*");
    for (const uint point : points) {
        const char32_t c = point, lower = QChar::toLower(c), upper = QChar::toUpper(c);
        if (lower != upper)
            pattern += QLatin1Char('[') + QString::fromUcs4(&lower, 1) +
                       QString::fromUcs4(&upper, 1) + QLatin1Char(']');
        else if (c == U'*' || c == U'?' || c == U'[')
            pattern += QLatin1Char('[') + QString::fromUcs4(&c, 1) + QLatin1Char(']');
        else
            pattern += QString::fromUcs4(&c, 1);
    }
    pattern += QLatin1Char('*');
    return {expression + QStringLiteral(" GLOB ?"), {pattern}};
}

MemberStatement page(const MemberFilter& filter, const std::optional<MemberRowKey>& after,
                     int limit) {
    MemberStatement match = condition(filter);
    QString continued;
    if (after && filter.field) {
        continued = AfterName;
        match.values << after->lastName << after->firstName << after->id << after->rowid;
    } else if (after) {
        continued = QStringLiteral("rowid > ?");
        match.values << after->rowid;
    }
    match.values << limit;
    return {Columns + where({match.sql, continued}) + order(filter) + QStringLiteral(" LIMIT ?"),
            match.values};
}

MemberStatement pageAt(const MemberFilter& filter, int offset, int limit, bool fromEnd) {
    MemberStatement match = condition(filter);
    match.values << limit << offset;
    return {Columns + where({match.sql}) + order(filter, fromEnd) +
                QStringLiteral(" LIMIT ? OFFSET ?"),
            match.values};
}

MemberStatement count(const MemberFilter& filter) {
    const MemberStatement match = condition(filter);
    return {QStringLiteral("SELECT count(*) FROM members") + where({match.sql}), match.values};
}

MemberStatement keyOf(const MemberFilter& filter, qint64 rowid) {
    MemberStatement match = condition(filter);
    const QString selected = match.sql.isEmpty() ? QStringLiteral("1") : match.sql;
    match.values << rowid;
    return {QStringLiteral("SELECT LN, FN, CID, coalesce(%1, 0) FROM members WHERE rowid = ?")
                .arg(selected),
            match.values};
}

MemberStatement countBefore(const MemberFilter& filter, const MemberRowKey& key) {
    MemberStatement match = condition(filter);
    if (!filter.field) {
        match.values << key.rowid;
        return {QStringLiteral("SELECT count(*) FROM members") +
                    where({match.sql, QStringLiteral("rowid < ?")}),
                match.values};
    }
    // Missing names and ids sort first, where a comparison with them says nothing.
    const QString before = QStringLiteral(
        "((LN, FN, CID, rowid) < (? COLLATE NOCASE, ? COLLATE NOCASE, ? COLLATE NOCASE, ?) "
        "OR LN IS NULL OR (LN = ? COLLATE NOCASE AND FN IS NULL) "
        "OR (LN = ? COLLATE NOCASE AND FN = ? COLLATE NOCASE AND CID IS NULL))");
    match.values << key.lastName << key.firstName << key.id << key.rowid << key.lastName
                 << key.lastName << key.firstName;
    return {QStringLiteral("SELECT count(*) FROM members") + where({match.sql, before}),
            match.values};
}

} // namespace memberQuery
