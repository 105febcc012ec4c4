#include "sales/takings_model.h"

#include "base/format.h"
#include "store/database.h"

#include <limits>

namespace {

bool sameSpan(const DateSpan& a, const DateSpan& b) {
    return a.mode == b.mode &&
           (a.mode != DateSpan::Mode::Range || (a.begin == b.begin && a.end == b.end));
}

} // namespace

TakingsModel::TakingsModel(const Database& database, Layout layout, QObject* parent)
    : QAbstractTableModel(parent), database_(database), layout_(layout) {}

TakingsKind TakingsModel::kind() const {
    return layout_ == Layout::Rentals ? TakingsKind::Rentals : TakingsKind::Services;
}

const QList<TakingsModel::Column>& TakingsModel::columns() const {
    using L = Column::Look;
    static const QList<Column> rentals = {
        {"DateIn", "Rdate", L::Date},   {"TimeIN", "StartT", L::Text}, {"TimeOut", "EndT", L::Text},
        {"Amount", "Amount", L::Money}, {"Terminal", "TID", L::Text},  {"ID", "CID", L::Text}};
    static const QList<Column> todaysServices = {{"ORNumber", "Orno", L::Number},
                                                 {"Description", "rdesc", L::Text},
                                                 {"Qty", "qty", L::Number},
                                                 {"Amount", "Amount", L::Money}};
    static const QList<Column> services = {{"ORNumber", "Orno", L::Number},
                                           {"DateIN", "Rdate", L::Date},
                                           {"Description", "rdesc", L::Text},
                                           {"Qty", "qty", L::Number},
                                           {"Amount", "Amount", L::Money}};
    switch (layout_) {
    case Layout::Rentals:
        return rentals;
    case Layout::TodaysServices:
        return todaysServices;
    case Layout::Services:
        break;
    }
    return services;
}

bool TakingsModel::show(const DateSpan& span, const QDate& today, const TakingsTotal& found) {
    const bool sameDays =
        sameSpan(span, span_) && (span.mode != DateSpan::Mode::Today || today == today_);
    if (shown_ && sameDays && found == total_)
        return false;
    beginResetModel();
    span_ = span;
    today_ = today;
    total_ = found;
    shown_ = true;
    blocks_.clear();
    recent_.clear();
    failed_ = false;
    endResetModel();
    return true;
}

const QList<QVariantList>* TakingsModel::block(int row) const {
    const int number = row / BlockRows;
    if (auto it = blocks_.constFind(number); it != blocks_.cend()) {
        recent_.removeOne(number);
        recent_.append(number);
        return &*it;
    }
    if (failed_)
        return nullptr;

    QStringList fields{QStringLiteral("rowid")};
    for (const Column& c : columns())
        fields << QString::fromLatin1(c.field);
    const DateCondition when = dateCondition(span_, today_);
    // The order the revenue index keeps, so that a block far down is found by skipping
    // index entries, without reading the rows before it.
    const QString order = span_.mode == DateSpan::Mode::Today
                              ? QStringLiteral(" ORDER BY rowid")
                              : QStringLiteral(" ORDER BY Rdate, Amount, rowid");
    QList<QVariantList> rows;
    try {
        DbSession s(database_);
        auto q = s.run(QStringLiteral("SELECT ") + fields.join(QStringLiteral(", ")) +
                           QStringLiteral(" FROM TmpRvnD WHERE rtype = ? COLLATE NOCASE") +
                           when.condition + order + QStringLiteral(" LIMIT ? OFFSET ?"),
                       QVariantList{rtypeOf(kind())} + when.values +
                           QVariantList{BlockRows, qint64(number) * BlockRows});
        while (q.next()) {
            QVariantList values;
            values.reserve(fields.size());
            for (int i = 0; i < fields.size(); ++i)
                values << q.value(i);
            rows << values;
        }
    } catch (const StoreError& e) {
        failed_ = true;
        Q_EMIT readFailed(e.text());
        return nullptr;
    }
    while (recent_.size() >= KeptBlocks)
        blocks_.remove(recent_.takeFirst());
    recent_.append(number);
    return &*blocks_.insert(number, rows);
}

qint64 TakingsModel::rowidAt(int row) const {
    if (row < 0 || row >= rowCount())
        return 0;
    const auto* rows = block(row);
    const int at = row % BlockRows;
    return rows && at < rows->size() ? rows->at(at).value(0).toLongLong() : 0;
}

int TakingsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(qMin<qint64>(total_.rows, std::numeric_limits<int>::max()));
}

int TakingsModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(columns().size());
}

QVariant TakingsModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount() || index.column() >= columnCount())
        return {};
    const Column& column = columns().at(index.column());
    if (role == Qt::TextAlignmentRole)
        return column.look == Column::Look::Money || column.look == Column::Look::Number
                   ? QVariant(Qt::AlignRight | Qt::AlignVCenter)
                   : QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    if (role != Qt::DisplayRole)
        return {};
    const auto* rows = block(index.row());
    const int at = index.row() % BlockRows;
    if (!rows || at >= rows->size())
        return {};
    const QVariant value = rows->at(at).value(index.column() + 1);
    if (value.isNull())
        return {};
    switch (column.look) {
    case Column::Look::Date: {
        const QDate day = QDate::fromString(value.toString().trimmed().left(10), Qt::ISODate);
        return day.isValid() ? formatDate(day, QStringLiteral("MM/DD/YYYY")) : value.toString();
    }
    case Column::Look::Money:
        return formatNumber(Money::fromDouble(value.toDouble()), QStringLiteral("##,##0.#0"));
    case Column::Look::Number:
        return QString::number(value.toDouble(), 'g', 15);
    case Column::Look::Text:
        break;
    }
    return value.toString();
}

QVariant TakingsModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Vertical)
        return section + 1;
    if (section < 0 || section >= columnCount())
        return {};
    return QString::fromLatin1(columns().at(section).heading);
}
