#include "billing/record_table.h"

#include "base/money.h"
#include "base/prompts.h"
#include "billing/typed_values.h"
#include "store/database.h"

namespace {

const QString NumericKeys = QStringLiteral(".0123456789");

} // namespace

RecordTable::RecordTable(Kind kind, const Database& database, Prompts& prompts, QObject* parent)
    : QAbstractTableModel(parent), kind_(kind), database_(database), prompts_(prompts) {
    if (kind_ == Kind::Services)
        columns_ = {{"Description", "Description", false}, {"Amount", "Amount", true}};
    else
        columns_ = {{"ddtls", "Details", false},
                    {"drange", "Range", false},
                    {"dtype", "Type", false},
                    {"Amount", "Amount", true}};
}

QString RecordTable::tableName() const {
    return kind_ == Kind::Services ? QStringLiteral("services") : QStringLiteral("promos");
}

QString RecordTable::columnList() const {
    QStringList names;
    for (const Column& c : columns_)
        names << QString::fromLatin1(c.name);
    return names.join(QStringLiteral(", "));
}

bool RecordTable::load() {
    // The services in the order the console lists them; the promos in the order their
    // list numbers them.
    const QString order = kind_ == Kind::Services
                              ? QStringLiteral("Description COLLATE NOCASE, rowid")
                              : QStringLiteral("rowid");
    QList<Record> read;
    try {
        DbSession s(database_);
        auto q = s.run(QStringLiteral("SELECT rowid, %1 FROM %2 ORDER BY %3")
                           .arg(columnList(), tableName(), order));
        while (q.next()) {
            Record r{q.value(0).toLongLong(), {}};
            for (int c = 0; c < columnCount(); ++c)
                r.values << q.value(c + 1);
            read << r;
        }
    } catch (const StoreError& e) {
        tellDatabaseFailure(prompts_, QStringLiteral("The %1 could not be read").arg(tableName()),
                            e);
        return false;
    }
    beginResetModel();
    records_ = read;
    endResetModel();
    return true;
}

int RecordTable::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : recordCount() + 1;
}

int RecordTable::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(columns_.size());
}

QVariant RecordTable::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::EditRole) ||
        index.row() >= recordCount())
        return {};
    const QVariant& value = records_.at(index.row()).values.at(index.column());
    if (!isNumeric(index.column()))
        return value.toString();
    return value.isNull() ? QString() : QString::number(value.toDouble(), 'g', 15);
}

QVariant RecordTable::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Horizontal)
        return section >= 0 && section < columnCount()
                   ? QString::fromLatin1(columns_[size_t(section)].header)
                   : QVariant();
    // The blank row is where a new record is typed.
    return isNewRecordRow(section) ? QStringLiteral("*") : QString::number(section + 1);
}

Qt::ItemFlags RecordTable::flags(const QModelIndex& index) const {
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable;
}

bool RecordTable::isNumeric(int column) const {
    return column >= 0 && column < columnCount() && columns_[size_t(column)].numeric;
}

bool RecordTable::acceptsTyped(int column, const QString& typed) const {
    if (!isNumeric(column))
        return true;
    for (const QChar c : typed)
        if (c.category() != QChar::Other_Control && !NumericKeys.contains(c))
            return false;
    return true;
}

bool RecordTable::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!index.isValid() || role != Qt::EditRole || index.row() > recordCount())
        return false;
    const QString text = value.toString();
    // Leaving a cell as it was, or the blank row still blank, writes nothing.
    if (text == data(index, Qt::EditRole).toString())
        return true;
    if (refuseApostrophe(prompts_, text))
        return false;
    QVariant stored = text;
    if (isNumeric(index.column())) {
        const auto number = typedNumber(prompts_, text);
        if (!number)
            return false;
        stored = Money::fromDouble(*number).toDouble();
    }
    return isNewRecordRow(index.row()) ? add(index.column(), stored)
                                       : write(index.row(), index.column(), stored);
}

bool RecordTable::write(int row, int column, const QVariant& value) {
    Record& record = records_[row];
    try {
        DbSession s(database_);
        auto q = s.run(QStringLiteral("UPDATE %1 SET %2 = ? WHERE rowid = ?")
                           .arg(tableName(), QString::fromLatin1(columns_[size_t(column)].name)),
                       {value, record.rowid});
        if (q.numRowsAffected() == 0) {
            prompts_.message(QStringLiteral("This record is no longer in the %1 table; the list "
                                            "now shows the table as it is.")
                                 .arg(tableName()),
                             QStringLiteral("Not saved"), Prompts::Icon::Exclamation);
            load();
            return false;
        }
    } catch (const StoreError& e) {
        tellDatabaseFailure(prompts_, QStringLiteral("The change could not be saved"), e);
        return false;
    }
    record.values[column] = value;
    Q_EMIT dataChanged(index(row, column), index(row, column));
    return true;
}

bool RecordTable::add(int column, const QVariant& value) {
    Record record;
    QStringList marks;
    for (int c = 0; c < columnCount(); ++c) {
        record.values << (c == column ? value : isNumeric(c) ? QVariant(0.0) : QVariant(QString()));
        marks << QStringLiteral("?");
    }
    try {
        DbSession s(database_);
        auto q = s.run(QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                           .arg(tableName(), columnList(), marks.join(QStringLiteral(", "))),
                       record.values);
        record.rowid = q.lastInsertId().toLongLong();
    } catch (const StoreError& e) {
        tellDatabaseFailure(prompts_, QStringLiteral("The new record could not be saved"), e);
        return false;
    }
    // The blank row becomes the record, and a new blank row follows it.
    const int row = recordCount();
    beginInsertRows({}, row + 1, row + 1);
    records_ << record;
    endInsertRows();
    Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
    return true;
}

bool RecordTable::deleteRecord(int row) {
    if (row < 0 || row >= recordCount())
        return false;
    const QString question = kind_ == Kind::Services ? QStringLiteral("Delete current Service?")
                                                     : QStringLiteral("Delete current record?");
    if (prompts_.ask(question, QStringLiteral("Remove record?"), Prompts::Buttons::YesNo,
                     Prompts::Icon::Critical) != Prompts::Answer::Yes)
        return false;
    try {
        DbSession s(database_);
        s.run(QStringLiteral("DELETE FROM %1 WHERE rowid = ?").arg(tableName()),
              {records_.at(row).rowid});
    } catch (const StoreError& e) {
        tellDatabaseFailure(prompts_, QStringLiteral("The record could not be deleted"), e);
        return false;
    }
    beginRemoveRows({}, row, row);
    records_.removeAt(row);
    endRemoveRows();
    return true;
}
