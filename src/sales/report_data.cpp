#include "sales/report_data.h"

#include "base/format.h"
#include "store/database.h"

#include <QSqlRecord>

namespace {

struct Statement {
    QString sql;
    QVariantList values;
};

// The rows in the order the report lists them: by date, and within a day in the order
// they were taken; unsorted, in the order the table holds them.
QString orderBy(bool byDate) {
    return byDate ? QStringLiteral(" ORDER BY Rdate, rowid") : QStringLiteral(" ORDER BY rowid");
}

Statement statementFor(const ReportRequest& request, const QDate& today) {
    const DateCondition when = dateCondition(request.span, today);
    switch (request.kind) {
    case ReportKind::Rentals:
    case ReportKind::Services: {
        QVariantList values{request.kind == ReportKind::Rentals ? QStringLiteral("GAMES_RENTALS")
                                                                : QStringLiteral("SERVICE")};
        values << when.values;
        return {QStringLiteral("SELECT * FROM TmpRvnD WHERE rtype = ?") + when.condition +
                    orderBy(request.ordered),
                values};
    }
    case ReportKind::Summary: {
        // The combined report is always by date; its condition starts the clause.
        const QString where =
            when.condition.isEmpty() ? QString() : QStringLiteral(" WHERE") + when.condition.mid(4);
        return {QStringLiteral("SELECT * FROM TmpRvnD") + where + orderBy(true), when.values};
    }
    case ReportKind::Members:
        break;
    }
    return {QStringLiteral("SELECT * FROM members ORDER BY CID, rowid"), {}};
}

ReportTable fetch(const Database& database, const Statement& statement) {
    DbSession s(database);
    QSqlQuery q = s.run(statement.sql, statement.values);
    QStringList columns;
    const QSqlRecord record = q.record();
    for (int i = 0; i < record.count(); ++i)
        columns << record.fieldName(i);
    ReportTable table(columns, {});
    while (q.next()) {
        QVariantList row;
        row.reserve(columns.size());
        for (int i = 0; i < columns.size(); ++i)
            row << q.value(i);
        table.append(row);
    }
    return table;
}

QString captionOf(ReportKind kind, const QDate& today) {
    switch (kind) {
    case ReportKind::Rentals:
        return QStringLiteral("Tarvo QRB  Rentals / Gaming Report");
    case ReportKind::Services:
        return QStringLiteral("Tarvo QRB  Services Report");
    case ReportKind::Summary:
        return QStringLiteral("Tarvo QRB  Rentals/Gaming and Services Report");
    case ReportKind::Members:
        break;
    }
    return QStringLiteral("Tarvo QRB  Members as of [") +
           formatDate(today, QStringLiteral("MM/DD/YYYY")) + QLatin1Char(']');
}

QString stemOf(ReportKind kind) {
    switch (kind) {
    case ReportKind::Rentals:
        return QStringLiteral("Rentals");
    case ReportKind::Services:
        return QStringLiteral("Services");
    case ReportKind::Summary:
        return QStringLiteral("Summary");
    case ReportKind::Members:
        break;
    }
    return QStringLiteral("Members");
}

} // namespace

PreparedReport prepareReport(const Database& database, const ReportRequest& request,
                             const QDateTime& now) {
    ReportTable rows = fetch(database, statementFor(request, now.date()));
    const QString dateTime = formatDateTime(now, QStringLiteral("MM/DD/YYYY HH:MM:SS"));
    QHash<QString, QString> labels;
    Money total;
    if (request.kind == ReportKind::Members) {
        labels.insert(QStringLiteral("lbldate"), QStringLiteral("DATE : ") + dateTime);
        labels.insert(QStringLiteral("lblCountMem"), QStringLiteral("A Total of ") +
                                                         QString::number(rows.rowCount()) +
                                                         QStringLiteral(" Member/s Currently"));
    } else {
        total = amountTotal(rows);
        labels.insert(QStringLiteral("lbldate"), dateTime);
        labels.insert(QStringLiteral("lbldrange"), request.rangeText);
        labels.insert(QStringLiteral("lblGrandTotal"),
                      formatNumber(total, QStringLiteral("###,###,##0.#0")));
    }
    return {ReportDocument(reportLayout(request.kind), std::move(rows), std::move(labels)),
            captionOf(request.kind, now.date()), stemOf(request.kind), total};
}

qint64 countReportRows(const Database& database, const ReportRequest& request, const QDate& today) {
    const Statement statement = statementFor(request, today);
    DbSession s(database);
    QSqlQuery q = s.run(QStringLiteral("SELECT COUNT(*) FROM (") + statement.sql + QLatin1Char(')'),
                        statement.values);
    return q.next() ? q.value(0).toLongLong() : 0;
}

ReportTable membersByName(const Database& database) {
    // A missing name part sorts as empty instead of making the whole key unknown.
    return fetch(database, {QStringLiteral("SELECT * FROM members ORDER BY COALESCE(LN, '') || "
                                           "COALESCE(FN, '') COLLATE NOCASE, rowid"),
                            {}});
}
