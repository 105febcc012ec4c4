#pragma once

#include "base/money.h"
#include "sales/report_layout.h"

#include <QDate>
#include <QHash>
#include <QList>
#include <QStringList>
#include <QVariant>

#include <optional>

// The rows a report shows, as the statement returned them; columns are found by name
// without regard to case, as the database engine finds them.
class ReportTable {
public:
    ReportTable() = default;
    ReportTable(QStringList columns, QList<QVariantList> rows);

    const QStringList& columns() const { return columns_; }
    qsizetype rowCount() const { return rows_.size(); }
    // Null when the row or the column is not there.
    QVariant value(qsizetype row, const QString& column) const;
    void append(const QVariantList& row) { rows_.append(row); }

private:
    QStringList columns_;
    QHash<QString, int> index_; // lower-case name -> position
    QList<QVariantList> rows_;
};

// A stored date: the date the console writes, or the text another tool may have left
// ("2026-11-15 00:00:00", "11/15/2026"). Invalid when it is none of these.
QDate dateValue(const QVariant& value);

// A stored amount: a number, or the text the sale dialog kept ("1,250.00"), whose
// grouping commas are read as such. Nothing when it is neither.
std::optional<double> amountValue(const QVariant& value);

// A field's value as the report shows it; a value that does not fit its format (a date
// column holding a word) is shown as it is stored.
QString fieldText(const QVariant& value, FieldFormat format);

// The sum of the Amount column, exactly, as the grand total adds it.
Money amountTotal(const ReportTable& table);
