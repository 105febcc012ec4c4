#pragma once

#include <QAbstractTableModel>
#include <QList>
#include <QVariant>

#include <vector>

class Database;
class Prompts;

// The services or the promos as a grid edits them in place: every change is written to
// the table at once, and the blank row after the last record takes a new one. Nothing
// here touches the console's in-memory lists: the rates window's Apply reads the services
// again, and the promos are read again only at the next start.
class RecordTable : public QAbstractTableModel {
    Q_OBJECT
public:
    enum class Kind {
        Services, // Description, Amount; in order of description
        Promos,   // ddtls, drange, dtype, Amount; in the table's own order
    };

    RecordTable(Kind kind, const Database& database, Prompts& prompts, QObject* parent = nullptr);

    // Reads the records again; on failure tells the operator and keeps what it showed.
    bool load();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    // Writes the typed text into the record, or adds a record when typed in the blank row.
    // A text with an apostrophe, a number too large, or a database failure is told and
    // changes nothing.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    int recordCount() const { return int(records_.size()); }
    bool isNewRecordRow(int row) const { return row == recordCount(); }
    bool isNumeric(int column) const;
    // Whether the text a key types may go into `column`: in a numeric column only
    // ".0123456789"; editing keys (no text, or control characters) always.
    bool acceptsTyped(int column, const QString& typed) const;

    // Asks whether to delete the record at `row` and deletes it on Yes. True when deleted.
    bool deleteRecord(int row);

private:
    struct Column {
        const char* name;
        const char* header;
        bool numeric;
    };
    struct Record {
        qint64 rowid = 0;
        QVariantList values;
    };

    QString tableName() const;
    QString columnList() const;
    bool write(int row, int column, const QVariant& value);
    bool add(int column, const QVariant& value);

    Kind kind_;
    const Database& database_;
    Prompts& prompts_;
    std::vector<Column> columns_;
    QList<Record> records_;
};
