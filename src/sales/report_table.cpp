#include "sales/report_table.h"

#include "base/format.h"

#include <cmath>

ReportTable::ReportTable(QStringList columns, QList<QVariantList> rows)
    : columns_(std::move(columns)), rows_(std::move(rows)) {
    for (int i = 0; i < columns_.size(); ++i)
        index_.insert(columns_[i].toLower(), i);
}

QVariant ReportTable::value(qsizetype row, const QString& column) const {
    const auto at = index_.constFind(column.toLower());
    if (row < 0 || row >= rows_.size() || at == index_.constEnd())
        return {};
    return rows_[row].value(*at);
}

QDate dateValue(const QVariant& value) {
    if (value.typeId() == QMetaType::QDate)
        return value.toDate();
    if (value.typeId() == QMetaType::QDateTime)
        return value.toDateTime().date();
    const QString text = value.toString().trimmed();
    if (text.isEmpty())
        return {};
    QDate d = QDate::fromString(text.left(10), Qt::ISODate);
    if (!d.isValid())
        d = QDate::fromString(text.section(QLatin1Char(' '), 0, 0), QStringLiteral("M/d/yyyy"));
    return d;
}

std::optional<double> amountValue(const QVariant& value) {
    if (value.isNull())
        return std::nullopt;
    switch (value.typeId()) {
    case QMetaType::Double:
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        return value.toDouble();
    default:
        break;
    }
    QString text = value.toString().trimmed();
    text.remove(QLatin1Char(','));
    bool ok = false;
    const double d = text.toDouble(&ok);
    if (!ok || !std::isfinite(d))
        return std::nullopt;
    return d;
}

QString fieldText(const QVariant& value, FieldFormat format) {
    if (value.isNull())
        return QString();
    switch (format) {
    case FieldFormat::Text:
        break;
    case FieldFormat::Date:
        if (const QDate d = dateValue(value); d.isValid())
            return formatDate(d, QStringLiteral("MM/DD/YYYY"));
        break;
    case FieldFormat::Money:
        if (const auto a = amountValue(value))
            return formatNumber(*a, QStringLiteral("#,##0.00"));
        break;
    case FieldFormat::Number:
        if (const auto a = amountValue(value)) {
            if (*a == std::floor(*a) && std::abs(*a) < 1e15)
                return QString::number(qint64(*a));
            return QString::number(*a, 'g', 15);
        }
        break;
    }
    return value.toString();
}

Money amountTotal(const ReportTable& table) {
    Money total;
    for (qsizetype r = 0; r < table.rowCount(); ++r)
        if (const auto a = amountValue(table.value(r, QStringLiteral("Amount"))))
            total += Money::fromDouble(*a);
    return total;
}
