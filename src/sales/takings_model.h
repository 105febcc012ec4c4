#pragma once

#include "sales/takings.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QList>
#include <QVariantList>

class Database;

// The rows of one kind of takings for a span, for a grid. Rows are read when a view asks
// for them, a block at a time, and only a few blocks are kept: a span of every date over
// years costs what the screen shows, not a million rows. No statement stays open between
// two reads, so nothing is locked while the grid waits.
//
// Today's rows come in the order they were written; those of a range or of every date by
// day (and, within a day, by amount, the order the revenue index keeps them in).
class TakingsModel : public QAbstractTableModel {
    Q_OBJECT
public:
    // The columns each grid shows, headed as the operators know them.
    enum class Layout {
        Rentals,        // DateIn, TimeIN, TimeOut, Amount, Terminal, ID
        TodaysServices, // ORNumber, Description, Qty, Amount
        Services,       // ORNumber, DateIN, Description, Qty, Amount
    };
    static constexpr int BlockRows = 100;
    static constexpr int KeptBlocks = 40;

    TakingsModel(const Database& database, Layout layout, QObject* parent = nullptr);

    TakingsKind kind() const;
    const DateSpan& dateSpan() const { return span_; }
    const TakingsTotal& total() const { return total_; }

    // Shows the rows of the span, as `found` (takingsTotal of the same span) counted them.
    // When that is what the grid shows already, nothing is read again: false.
    bool show(const DateSpan& span, const QDate& today, const TakingsTotal& found);

    // The revenue row shown in `row`, 0 when it cannot be read.
    qint64 rowidAt(int row) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

Q_SIGNALS:
    // A block could not be read (the grid shows it empty); once until the next show().
    void readFailed(const QString& reason) const;

private:
    struct Column {
        const char* heading;
        const char* field;
        enum class Look { Text, Date, Money, Number } look;
    };
    const QList<Column>& columns() const;
    // The block holding `row`, read when it is not kept; null when it cannot be read.
    const QList<QVariantList>* block(int row) const;

    const Database& database_;
    Layout layout_;
    DateSpan span_;
    QDate today_;
    TakingsTotal total_;
    bool shown_ = false;
    mutable QHash<int, QList<QVariantList>> blocks_; // rowid first, then the columns
    mutable QList<int> recent_;                      // block numbers, most recent last
    mutable bool failed_ = false;
};
